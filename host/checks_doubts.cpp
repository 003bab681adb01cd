// Warnings: what runs, but is surely not meant.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "checks.h"
#include "network.h"
#include "shared_faults.h"

namespace kesto {

namespace {

class Doubts {
  public:
    Doubts(const Model& model, SeriesValues& series, Diagnostics& diagnostics)
        : model_(model), series_(series), diagnostics_(diagnostics) {}

    void raise() {
        checkTimeStep();
        checkLatitude();
        checkParameters();
        for (const Component& component : model_.components) {
            checkFrost(component);
            checkQuota(component);
            checkArea(component);
        }
        checkWind();
        checkRain();
        checkInfiltration();
        if (model_.isNetworkComplete) checkReach();
        if (model_.simulation.traceSources) checkIds();
        shared_.report(diagnostics_);
    }

  private:
    void doubt(const Place& place, const Component& component, std::string_view text) {
        diagnostics_.warning(place, fmt::format("{} ({}): {}", nameOf(component), component.type->name, text));
    }

    void checkTimeStep() {
        const Simulation& simulation = model_.simulation;
        if (simulation.timeStep == 1) return;
        diagnostics_.warning(simulation.place,
                             fmt::format("[simulation]: time_step is {} days, but the calendar and all "
                                         "series still move one day a step",
                                         simulation.timeStep));
    }

    // The sunset hour angle is an arc cosine: beyond the polar circles it is not a number on some days.
    void checkLatitude() {
        const auto& latitude = model_.simulation.latitude;
        if (!latitude || std::abs(*latitude) < 66.5) return;
        for (const Component& component : model_.components) {
            if (!component.type->usesLatitude) continue;
            doubt(component.place, component, "days without sunrise or sunset have a radiation that is not a number");
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
                    value.place,
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
        shared_.add(
            Severity::warning, series_.placeOf(source, step), component,
            fmt::format("{} day{} below 0 degC, the first on {}: from then on nothing but not-a-number comes from",
                        frost, frost == 1 ? "" : "s", toText(model_.simulation.start + static_cast<Day>(step))),
            "; cut the series at 0");
    }

    void checkQuota(const Component& component) {
        if (component.code != code::kQuotaLimiter) return;
        const CivilDate start = dateOf(model_.simulation.start);
        if (start.month == 1 && start.day == 1) return;
        doubt(component.place, component,
              fmt::format("the run starts on {}: its first year has the whole yearly allowance",
                          toText(model_.simulation.start)));
    }

    void checkArea(const Component& component) {
        const Size& size = component.type->size;
        if (size.unit != "m2" || !component.hasSize || component.size > 0) return;
        doubt(component.sizePlace, component, fmt::format("its {} is {} m2", size.meaning, component.size));
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
                model_.sources[at(source)].place,
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
            diagnostics_.warning(series_.placeOf(source, step),
                                 fmt::format("rainfall is {} on {}; is it a mark for a missing value?", *first,
                                             toText(model_.simulation.start + static_cast<Day>(step))));
        }
    }

    // A sum of litres and millimetres means nothing.
    void checkInfiltration() {
        std::map<int, const Component*> volumes;
        for (const Component& component : model_.components) {
            const auto unit = unitBooked(component, kInfiltration);
            if (unit && *unit == info(kInfiltration).unit) volumes.emplace(component.group, &component);
        }
        for (const Component& component : model_.components) {
            const auto unit = unitBooked(component, kInfiltration);
            const auto other = volumes.find(component.group);
            if (!unit || *unit == info(kInfiltration).unit || component.group < 0 || other == volumes.end()) continue;
            doubt(
                component.place, component,
                fmt::format("it books its infiltration in {}, \"{}\" of the same group in {}: their sum means nothing; "
                            "put it into a group of its own",
                            *unit, other->second->name, info(kInfiltration).unit));
        }
    }

    // What makes water or demand by itself, or has some stored; the rest lives on what is sent to it.
    static bool isSource(const Component& component) {
        if (component.type->inputs == 0) return true;
        return std::any_of(component.type->series.begin(), component.type->series.end(),
                           [](const SeriesNeed& need) { return need.kind == SeriesKind::storage && need.isState; });
    }

    // Components of a loop send to each other, and still there may be nothing to send.
    void checkSources(const Network& network) {
        std::vector<bool> reached(model_.components.size(), false);
        std::vector<int> stack;
        for (std::size_t i = 0; i < reached.size(); ++i) {
            const int index = static_cast<int>(i);
            if (isSource(model_.components[i]) || network.incoming(index).empty()) stack.push_back(index);
        }
        while (!stack.empty()) {
            const int index = stack.back();
            stack.pop_back();
            if (reached[at(index)]) continue;
            reached[at(index)] = true;
            for (const int connection : network.outgoing(index)) {
                stack.push_back(model_.connections[at(connection)].to);
            }
        }
        for (std::size_t i = 0; i < reached.size(); ++i) {
            const Component& component = model_.components[i];
            if (!reached[i])
                doubt(component.place, component, "nothing reaches it: it is fed by a loop without a source");
        }
    }

    void checkReach() {
        const Network network(model_);
        checkSources(network);
        for (std::size_t i = 0; i < model_.components.size(); ++i) {
            const Component& component = model_.components[i];
            const int index = static_cast<int>(i);
            const bool isFed = !network.incoming(index).empty();
            if (component.type->inputs == kAnyInputs && !isFed) {
                doubt(component.place, component, "nothing sends to it");
            } else if (!component.type->out.empty() && network.outgoing(index).empty() && component.type->inputs == 0 &&
                       component.type->potentials.empty()) {
                doubt(component.place, component, "it sends to nothing");
            }
        }
    }

    // Leafs are told apart by the text of their ids: 12 counts as assigned once 1000012 is.
    void checkIds() {
        std::size_t digits = 0;
        for (const Component& component : model_.components) {
            const std::size_t length = std::to_string(component.id).size();
            if (digits == 0) digits = length;
            if (digits == length) continue;
            doubt(
                component.place, component,
                fmt::format("its id {} has other than {} digits: with trace_sources the engine may take it for another "
                            "source",
                            component.id, digits));
            return;
        }
    }

    const Model& model_;
    SeriesValues& series_;
    Diagnostics& diagnostics_;
    SharedFaults shared_;
};

}  // namespace

void checkDoubts(const Model& model, SeriesValues& series, Diagnostics& diagnostics) {
    Doubts(model, series, diagnostics).raise();
}

}  // namespace kesto
