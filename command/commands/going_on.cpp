#include "going_on.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>

#include "files.h"
#include "results_reader.h"
#include "step_memory.h"

namespace kesto {

namespace {

class States {
  public:
    // Throws std::runtime_error.
    explicit States(const std::string& folder) : folder_(folder), stored_(storedResults(folder)) {
        read_ = readStates(folder, stored_.files);
        expectUnchanged(folder, stored_);
        file_ = folder;
        if (const WrittenFile* file = statesFile(stored_.files)) file_ = joined(folder, file->name);
    }

    const std::string& file() const { return file_; }

    // False: the results do not hold the day, which is reported.
    bool choose(Day day, Diagnostics& diagnostics) {
        const auto found = std::find(read_.days.begin(), read_.days.end(), day);
        step_ = static_cast<std::size_t>(found - read_.days.begin());
        if (found != read_.days.end()) return true;
        const std::string held = read_.days.empty()
                                     ? "no state"
                                     : fmt::format("{} to {}", toText(read_.days.front()), toText(read_.days.back()));
        diagnostics.error("missing-state", place(),
                          fmt::format("it holds {}; expected {}, the day before the run begins", held, toText(day)));
        return false;
    }

    // None: reported.
    std::optional<float> take(const Component& component, const SeriesNeed& need, Diagnostics& diagnostics) {
        const std::string_view word = need.kind == SeriesKind::storage ? "storage" : "quality";
        const auto& list = need.kind == SeriesKind::storage ? read_.storages : read_.storeQualities;
        const auto found = std::find_if(list.begin(), list.end(),
                                        [&](const NamedSeries& series) { return series.name == component.name; });
        if (found == list.end()) {
            diagnostics.error("missing-state", place(),
                              fmt::format("it has no {} of {} ({})", word, nameOf(component), component.type->name));
            return std::nullopt;
        }
        used_.insert(&*found);
        const std::string_view unit = need.kind == SeriesKind::storage ? ownUnit(*component.type, need.kind) : "";
        if (found->unit == unit) return found->values[step_];
        diagnostics.error("missing-state", place(),
                          fmt::format("the {} of \"{}\" is in {}; expected {}, as of a {}", word, component.name,
                                      found->unit, unit, component.type->name));
        return std::nullopt;
    }

    void reportUnused(Diagnostics& diagnostics) const {
        std::set<std::string> names;
        for (const auto* list : {&read_.storages, &read_.storeQualities}) {
            for (const NamedSeries& series : *list) {
                if (!used_.contains(&series)) names.insert(fmt::format("\"{}\"", series.name));
            }
        }
        if (names.empty()) return;
        diagnostics.warning("unused-state", place(),
                            fmt::format("the model has no store that takes the state of {}",
                                        listOf({names.begin(), names.end()}, "and")));
    }

    Place place() const { return {std::make_shared<const std::string>(file_), 0, 0}; }

  private:
    std::string folder_, file_;
    StoredResults stored_;
    ReadResults read_;
    std::size_t step_ = 0;
    std::set<const NamedSeries*> used_;
};

void takeAll(Model& model, States& states, Diagnostics& diagnostics) {
    for (Component& component : model.components) {
        for (const SeriesNeed& need : component.type->series) {
            if (!need.isState || !isNeeded(model, need)) continue;
            const auto value = states.take(component, need, diagnostics);
            if (!value) continue;
            SeriesSource source;
            source.constant = static_cast<double>(*value);
            source.place = states.place();
            component.series[need.kind] = model.addSource(source);
        }
    }
    states.reportUnused(diagnostics);
}

}  // namespace

void takeStates(Model& model, const std::string& results, Diagnostics& diagnostics) {
    model.simulation.goesOn = true;
    if (!model.simulation.isDated) return;
    try {
        States states(results);
        model.statesFile = states.file();
        const bool hasStates = std::any_of(model.components.begin(), model.components.end(), [&](const Component& one) {
            return std::any_of(one.type->series.begin(), one.type->series.end(),
                               [&](const SeriesNeed& need) { return need.isState && isNeeded(model, need); });
        });
        if (!hasStates) return states.reportUnused(diagnostics);
        if (states.choose(model.simulation.start - 1, diagnostics)) takeAll(model, states, diagnostics);
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
            const bool isState = std::any_of(needs.begin(), needs.end(), [&](const SeriesNeed& need) {
                return need.kind == kind && need.isState && isNeeded(model, need);
            });
            if (component.series[kind] >= 0 && !isState) series.dayBefore(component.series[kind]);
        }
    }
}

}  // namespace kesto
