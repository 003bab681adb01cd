// Warnings: values that can be run with, but are surely not meant.
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
        for (const Component& component : model_.components) {
            checkFrost(component);
            checkSize(component);
            checkFractions(component);
        }
        checkWind();
        checkRain();
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

    // A capacity of 0 passes all on, which may be meant.
    void checkSize(const Component& component) {
        const Size& size = component.type->size;
        const bool isOdd = (size.unit == "m2" && component.size <= 0) || (size.unit == "L" && component.size < 0);
        if (!isOdd || !component.hasSize) return;
        doubt("odd-size", component.sizePlace, component,
              fmt::format("its {} is {} {}", size.meaning, component.size, size.unit));
    }

    // Most often a percentage.
    void checkFractions(const Component& component) {
        if (component.brand < 0) return;
        const Brand& brand = model_.brands[at(component.brand)];
        for (const Parameter& parameter : component.type->parameters) {
            const auto given = brand.specifications.find(parameter.number);
            if (given == brand.specifications.end() || !parameter.name.ends_with("_fraction")) continue;
            const double value = given->second.value;
            if (value >= 0 && value <= 1) continue;
            shared_.addWarning("odd-fraction", given->second.place, component,
                               fmt::format("brand \"{}\": {} is {}, which is not between 0 and 1; read by", brand.name,
                                           parameter.name, value));
        }
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

    void checkRain() {
        std::set<SourceIndex> seen;
        for (const Group& group : model_.groups) {
            const SourceIndex source = group.series[SeriesKind::rainfall];
            if (source < 0 || !seen.insert(source).second) continue;
            const auto values = series_.of(source);
            if (!values) continue;
            const auto first = std::find_if(values->begin(), values->end(), [](float rain) { return rain < 0; });
            if (first == values->end()) continue;
            const auto step = static_cast<std::size_t>(first - values->begin());
            diagnostics_.warning("negative-rain", series_.placeOf(source, step),
                                 fmt::format("rainfall is {} on {}; is it a mark for a missing value?", *first,
                                             toText(model_.simulation.start + static_cast<Day>(step))));
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
