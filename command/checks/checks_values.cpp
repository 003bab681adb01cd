// Warnings: values that can be run with, but are surely not meant. Ranges stand in checks_ranges.cpp.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "checks.h"
#include "shared_faults.h"

namespace kesto {

namespace {

class ValueDoubts {
  public:
    ValueDoubts(const Model& model, SeriesValues& series, Diagnostics& diagnostics)
        : model_(model), series_(series), diagnostics_(diagnostics) {}

    void raise() {
        checkLatitude();
        checkParameters();
        checkReadSeries();
        for (const Component& component : model_.components) {
            checkFrost(component);
        }
        checkWind();
        shared_.report(diagnostics_);
    }

  private:
    void doubt(WarningName code, const Place& place, const Component& component, std::string_view text) {
        diagnostics_.warning(code, place, fmt::format("{} ({}): {}", nameOf(component), component.type->name, text),
                             component.name);
    }

    // The sunset hour angle is an arc cosine: beyond the polar circles it is not a number on some days.
    void checkLatitude() {
        const auto& latitude = model_.simulation.latitude;
        if (!latitude || std::abs(*latitude) < 66.5) return;
        for (const Component& component : model_.components) {
            if (!component.type->usesLatitude) continue;
            doubt("polar-days", component.place, component,
                  "days without sunrise or sunset have a radiation that is not a number");
            return;
        }
    }

    // A parameter that no type of the brand's components reads is most often one of another type.
    void checkParameters() {
        std::map<int, std::set<int>> read;
        std::set<int> members;
        for (const Component& component : model_.components) {
            if (component.brand < 0) continue;
            for (const Parameter& parameter : component.type->parameters) {
                read[component.brand].insert(parameter.number);
            }
        }
        for (const Component& component : model_.components) {
            for (const Split& split : component.splits) {
                for (const int member : split.members) {
                    members.insert(model_.components[at(member)].brand);
                }
            }
        }
        for (const auto& [index, numbers] : read) {
            const Brand& brand = model_.brands[at(index)];
            for (const auto& [number, value] : brand.specifications) {
                if (numbers.contains(number) || (number == 1 && members.contains(index))) continue;
                diagnostics_.warning(
                    "unread-parameter", value.place,
                    fmt::format("brand \"{}\": no component that uses it reads this parameter (specification {})",
                                brand.name, number));
            }
        }
    }

    // A series that nobody reads is most often one of another kind, or meant for somebody else. Where something is
    // wrong, who would read it may not have been understood.
    void checkReadSeries() {
        if (diagnostics_.hasErrors()) return;
        const std::vector<bool> isRead = readSources();
        std::map<SourceIndex, std::string_view> names;
        const auto addNames = [&](const SourcesByKind& series) {
            for (std::size_t kind = 0; kind < kSeriesKinds; ++kind) {
                const SourceIndex source = series.index[kind];
                if (source >= 0 && !isRead[at(source)]) names[source] = info(static_cast<SeriesKind>(kind)).name;
            }
        };
        for (const Group& group : model_.groups) {
            addNames(group.series);
        }
        for (const Component& component : model_.components) {
            addNames(component.series);
        }
        for (std::size_t i = 0; i < isRead.size(); ++i) {
            const auto name = names.find(static_cast<SourceIndex>(i));
            const bool isNamed = name != names.end();
            const bool isReplaced = !isNamed && model_.simulation.goesOn;  // an initial value, by a state
            if (isRead[i] || isReplaced) continue;
            diagnostics_.warning("unread-series", model_.sources[i].place,
                                 fmt::format("no component reads {}", isNamed ? name->second : "this series"));
        }
    }

    // Habits may hold uses of appliances that a household does not have. Splitters and traced sources look up a storage
    // and a quality that are given to any component.
    std::vector<bool> readSources() const {
        std::vector<bool> isRead(model_.sources.size());
        const auto read = [&](SourceIndex source) {
            if (source >= 0) isRead[at(source)] = true;
        };
        for (const Component& component : model_.components) {
            for (const SeriesNeed& need : component.type->series) {
                read(sourceFor(model_, component, need));
            }
            read(component.series[SeriesKind::storage]);
            read(component.series[SeriesKind::quality]);
        }
        for (const Group& group : model_.groups) {
            std::for_each(group.uses.begin(), group.uses.end(), read);
        }
        return isRead;
    }

    std::shared_ptr<const Floats> seriesOf(const Component& component, SeriesKind kind, SourceIndex& source) {
        source = component.group < 0 ? kNoSource : model_.groups[at(component.group)].series[kind];
        return source < 0 ? nullptr : series_.of(source);
    }

    // The evaporation of the soil store is a power of the temperature: below 0 degC not a number, and then for good.
    void checkFrost(const Component& component) {
        if (component.code != code::kSoilStore) return;
        SourceIndex source = kNoSource;
        const auto values = seriesOf(component, SeriesKind::temperature, source);
        if (!values) return;
        const auto first = std::find_if(values->begin(), values->end(), [](float t) { return t < 0; });
        if (first == values->end()) return;
        const auto frost = std::count_if(values->begin(), values->end(), [](float t) { return t < 0; });
        const auto step = static_cast<std::size_t>(first - values->begin());
        shared_.addWarning(
            "frost", series_.placeOf(source, step), component,
            fmt::format("{} day{} below 0 degC, the first on {}: from then on nothing but not-a-number comes from",
                        frost, frost == 1 ? "" : "s", toText(model_.simulation.start + static_cast<Day>(step))),
            "; cut the series at 0");
    }

    // Weather files often hold m/s. A month without a day above 15 km/h anywhere is rarer than that mistake.
    void checkWind() {
        for (const Group& group : model_.groups) {
            const SourceIndex source = group.series[SeriesKind::wind];
            if (source < 0 || model_.sources[at(source)].kind != SeriesSource::Kind::column) continue;
            if (!model_.sources[at(source)].conversion.isIdentity()) continue;
            const auto values = series_.of(source);
            if (!values || values->size() < 30) continue;
            const float highest = *std::max_element(values->begin(), values->end());
            if (highest > 15) continue;
            diagnostics_.warning(
                "low-wind", model_.sources[at(source)].place,
                fmt::format("group \"{}\": the highest wind is {} km/h; if the file holds m/s, say unit = "
                            "\"m/s\"",
                            group.name, highest));
            return;
        }
    }

    const Model& model_;
    SeriesValues& series_;
    Diagnostics& diagnostics_;
    SharedFaults shared_;
};

}  // namespace

void checkValues(const Model& model, SeriesValues& series, Diagnostics& diagnostics) {
    ValueDoubts(model, series, diagnostics).raise();
}

}  // namespace kesto
