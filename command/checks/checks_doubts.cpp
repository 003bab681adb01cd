// Warnings: what runs, but is surely not meant. Those of single values stand in checks_values.cpp.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "checks.h"
#include "key_path.h"
#include "network.h"

namespace kesto {

namespace {

class Doubts {
  public:
    Doubts(const Model& model, Diagnostics& diagnostics) : model_(model), diagnostics_(diagnostics) {}

    void raise() {
        checkTimeStep();
        for (const Component& component : model_.components) {
            checkQuota(component);
        }
        checkStart();
        checkInfiltration();
        checkEnergy();
        checkNames();
        if (model_.isNetworkComplete) checkReach();
        if (model_.simulation.traceSources) checkIds();
    }

  private:
    void doubt(WarningName code, const Place& place, const Component& component, std::string_view text) {
        diagnostics_.warning(code, place, fmt::format("{} ({}): {}", nameOf(component), component.type->name, text),
                             component.name);
    }

    void checkTimeStep() {
        const Simulation& simulation = model_.simulation;
        if (simulation.timeStep == 1) return;
        diagnostics_.warning("time-step", simulation.place,
                             fmt::format("[simulation]: time_step is {} days, but the calendar and all "
                                         "series still move one day a step",
                                         simulation.timeStep));
    }

    void checkQuota(const Component& component) {
        if (component.code != code::kQuotaLimiter) return;
        const CivilDate start = dateOf(model_.simulation.start);
        if (start.month == 1 && start.day == 1) return;
        doubt("part-year", component.place, component,
              fmt::format("the run starts on {}: its first year has the whole yearly allowance",
                          toText(model_.simulation.start)));
    }

    // Their radiation follows from the mean range of temperature of the last 30 days, of which the first ones miss
    // some.
    void checkStart() {
        for (const Component& component : model_.components) {
            if (component.code != code::kSolarPanel && component.code != code::kNetRadiation) continue;
            doubt(
                "start-up", component.place, component,
                "its radiation is too large in the first 30 days of a run: start a month earlier and leave that month "
                "out of the results");
            return;
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
                "mixed-units", component.place, component,
                fmt::format("it books its infiltration in {}, \"{}\" of the same group in {}: their sum means nothing; "
                            "put it into a group of its own",
                            *unit, other->second->name, info(kInfiltration).unit));
        }
    }

    // Nobody pays for the heat of evaporation, or sells it.
    void checkEnergy() {
        for (const auto& [machine, heat] : energyOfGroups(model_)) {
            if (!machine || !heat) continue;
            doubt("mixed-energy", heat->place, *heat,
                  fmt::format("it books heat as energy, \"{}\" of the same group the energy of a machine: all of it "
                              "counts as energy; put one of them into a group of its own",
                              machine->name));
        }
    }

    // What makes water or demand by itself, or has some stored; the rest lives on what is sent to it.
    static bool isSource(const Component& component) {
        if (component.type->inputs() == 0) return true;
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
                doubt("no-source", component.place, component,
                      "nothing reaches it: it is fed by a loop without a source");
        }
    }

    void checkReach() {
        const Network network(model_);
        checkSources(network);
        for (std::size_t i = 0; i < model_.components.size(); ++i) {
            const Component& component = model_.components[i];
            const int index = static_cast<int>(i);
            const bool isFed = !network.incoming(index).empty();
            if (component.type->inputs() == kAnyInputs && !isFed) {
                doubt("no-input", component.place, component, "nothing sends to it");
            } else if (!component.type->out.empty() && network.outgoing(index).empty() &&
                       component.type->inputs() == 0 && component.type->potentials.empty()) {
                doubt("no-output", component.place, component, "it sends to nothing");
            }
        }
    }

    // Leaves are distinguished by the text of their ids: 12 counts as assigned once 1000012 is.
    void checkIds() {
        std::size_t digits = 0;
        for (const Component& component : model_.components) {
            const std::size_t length = std::to_string(component.id).size();
            if (digits == 0) digits = length;
            if (digits == length) continue;
            doubt(
                "id-digits", component.place, component,
                fmt::format("its id {} has other than {} digits: with trace_sources the engine may take it for another "
                            "source",
                            component.id, digits));
            return;
        }
    }

    // --set and scenarios would take them for something else.
    void checkNames() {
        const auto check = [&](const char* table, const std::string& name, const Place& place) {
            const bool isComponent = std::string_view(table) == "components";
            const bool isHidden = isComponent && isModelTable(name);
            if (!isHidden && !needsQuotes(name)) return;
            const std::string key = toText({table, name, "KEY"});
            const std::string component = isComponent ? name : "";
            diagnostics_.warning("quoted-name", place,
                                 fmt::format("\"{}\" is reached as {} by --set and scenarios", name, key), component);
        };
        for (const Component& component : model_.components) {
            check("components", component.name, component.place);
        }
        for (const Group& group : model_.groups) {
            check("groups", group.name, group.place);
        }
        for (const Brand& brand : model_.brands) {
            check("brands", brand.name, brand.place);
        }
    }

    const Model& model_;
    Diagnostics& diagnostics_;
};

}  // namespace

void checkDoubts(const Model& model, Diagnostics& diagnostics) {
    Doubts(model, diagnostics).raise();
}

}  // namespace kesto
