#include "going_on.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

#include "step_memory.h"
#include "stored_states.h"

namespace kesto {

namespace {

class States {
  public:
    // Throws std::runtime_error.
    States(const std::string& folder, Day day, Diagnostics& diagnostics)
        : day_(day),
          stored_(readStatesOf(day, folder)),
          used_(stored_.states.size(), false),
          diagnostics_(diagnostics) {
        for (std::size_t i = 0; i < stored_.states.size(); ++i) {
            index_.emplace(std::pair(stored_.states[i].kind, stored_.states[i].name), i);
        }
    }

    const std::string& file() const { return stored_.file; }
    Place place() const { return {std::make_shared<const std::string>(stored_.file), 0, 0}; }

    // False: the results do not hold the day, which is reported.
    bool hasDay() const {
        if (stored_.hasDay) return true;
        const std::string held =
            stored_.held ? fmt::format("{} to {}", toText(stored_.held->first), toText(stored_.held->second))
                         : "no state";
        diagnostics_.error("missing-state", place(),
                           fmt::format("it holds {}; expected {}, the day before the run begins", held, toText(day_)));
        return false;
    }

    // None: reported.
    std::optional<float> take(const Component& component, const SeriesNeed& need) {
        const bool isStorage = need.kind == SeriesKind::storage;
        const std::string_view word = isStorage ? "storage" : "quality";
        const std::string_view unit = isStorage ? ownUnit(*component.type, need.kind) : "";
        const auto found = index_.find({need.kind, component.name});
        if (found == index_.end()) {
            diagnostics_.error("missing-state", place(),
                               fmt::format("it has no {} of {} ({})", word, nameOf(component), component.type->name));
            return std::nullopt;
        }
        const StoredState& state = stored_.states[found->second];
        used_[found->second] = true;
        if (state.unit == unit) return state.value;
        diagnostics_.error("missing-state", place(),
                           fmt::format("the {} of \"{}\" is in {}; expected {}, as of a {}", word, component.name,
                                       state.unit, unit, component.type->name));
        return std::nullopt;
    }

    void reportUnused() const {
        std::set<std::string> names;
        for (std::size_t i = 0; i < used_.size(); ++i) {
            if (!used_[i]) names.insert(fmt::format("\"{}\"", stored_.states[i].name));
        }
        if (names.empty()) return;
        diagnostics_.warning("unused-state", place(),
                             fmt::format("the model has no store that takes the state of {}",
                                         listOf({names.begin(), names.end()}, "and")));
    }

  private:
    Day day_;
    StoredStates stored_;
    std::map<std::pair<SeriesKind, std::string>, std::size_t> index_;
    std::vector<bool> used_;
    Diagnostics& diagnostics_;
};

bool isState(const Model& model, const SeriesNeed& need) {
    return need.isState && isNeeded(model, need);
}

bool hasStates(const Model& model) {
    return std::any_of(model.components.begin(), model.components.end(), [&](const Component& component) {
        return std::any_of(component.type->series.begin(), component.type->series.end(),
                           [&](const SeriesNeed& need) { return isState(model, need); });
    });
}

void takeAll(Model& model, States& states) {
    for (Component& component : model.components) {
        for (const SeriesNeed& need : component.type->series) {
            if (!isState(model, need)) continue;
            const auto value = states.take(component, need);
            if (!value) continue;
            SeriesSource source;
            source.constant = static_cast<double>(*value);
            source.place = states.place();
            component.series[need.kind] = model.addSource(source);
        }
    }
}

}  // namespace

void takeStates(Model& model, const std::string& results, Diagnostics& diagnostics) {
    model.simulation.goesOn = true;
    if (!model.simulation.isDated) return;
    try {
        States states(results, model.simulation.start - 1, diagnostics);
        model.statesFile = states.file();
        if (hasStates(model)) {
            if (!states.hasDay()) return;
            takeAll(model, states);
        }
        states.reportUnused();
    } catch (const std::runtime_error& error) {
        diagnostics.error("missing-state", {std::make_shared<const std::string>("--states-from " + results), 0, 0},
                          error.what());
    }
}

void checkMemory(const Model& model, const std::vector<OutputPort>& recorded, bool approximate,
                 Diagnostics& diagnostics) {
    for (const Memory& memory : memoriesBesideStates(model, recorded)) {
        const Component& component = model.components[at(memory.component)];
        const std::string text = fmt::format("{} ({}): the states of a day do not hold {}", nameOf(component),
                                             component.type->name, memory.what);
        if (approximate) {
            diagnostics.warning("approximate", component.place, text + "; the run goes on without it", component.name);
        } else {
            diagnostics.error("not-exact", component.place,
                              text +
                                  ", so the run would differ from one in one piece; --approximate goes on "
                                  "without it");
        }
    }
}

void checkDayBefore(const Model& model, SeriesValues& series) {
    for (const Component& component : model.components) {
        for (const SeriesKind kind : {SeriesKind::storage, SeriesKind::quality}) {
            const auto& needs = component.type->series;
            const bool isWritten = std::any_of(needs.begin(), needs.end(), [&](const SeriesNeed& need) {
                return need.kind == kind && isState(model, need);
            });
            if (component.series[kind] >= 0 && !isWritten) series.dayBefore(component.series[kind]);
        }
    }
}

}  // namespace kesto
