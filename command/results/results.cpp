#include "results.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "carriers.h"
#include "record.h"
#include "sha256.h"

namespace kesto {

namespace {

Flow flowOf(const Model& model, const Carriers& carriers, OutputPort output, const Signal* signals) {
    const Component& component = model.components[at(output.component)];
    const Port& port = component.type->out[at(output.port) - 1];
    return {outputName(component, output.port),
            port.unit,
            output.component,
            output.port,
            carriers.ofOutput(output.component, output.port),
            signals};
}

Flow receivedBy(const Model& model, const Carriers& carriers, int index, const Signal* signals) {
    const Component& component = model.components[at(index)];
    return {component.name, "L", index, 0, carriers.of(index), signals};
}

// A delay's log holds what reached it; it sends the same so many steps later, and nothing before.
const Signal* delayed(Results& results, const Component& delay, const Signal* log) {
    auto shifted = std::make_unique<Signal[]>(std::max<std::size_t>(results.steps, 1));
    const auto by = static_cast<std::size_t>(std::lround(delay.size));
    for (std::size_t step = 0; step < results.steps; ++step) {
        shifted[step] = step < by ? Signal{0, 0} : log[step - by];
    }
    results.derived.push_back(std::move(shifted));
    return results.derived.back().get();
}

void collectFlows(Results& results, const Record& record, const EngineOutputs& outputs, const RecordingPlan& plan) {
    const Model& model = *results.model;
    const Carriers carriers(model, Network(model));
    const std::set<OutputPort> fromOwnLog(plan.fromOwnLog.begin(), plan.fromOwnLog.end());
    for (std::size_t i = 0; i < record.logs().size(); ++i) {
        const Signal* signals = outputs.logs[i];
        const int index = record.logs()[i];
        if (index < 0) {
            results.flows.push_back(flowOf(model, carriers, plan.logged[at(-1 - index)], signals));
            continue;
        }
        const Component& component = model.components[at(index)];
        const OutputPort output{index, 1};
        const bool wanted = fromOwnLog.contains(output);
        if (component.code == code::kLogger) results.flows.push_back(receivedBy(model, carriers, index, signals));
        if (component.code == code::kDelay && wanted) {
            results.flows.push_back(flowOf(model, carriers, output, delayed(results, component, signals)));
        }
    }
    for (std::size_t i = 0; i < record.waterBodies().size(); ++i) {
        results.flows.push_back(receivedBy(model, carriers, record.waterBodies()[i], outputs.waterBodies[i]));
    }
    std::stable_sort(results.flows.begin(), results.flows.end(),
                     [](const Flow& a, const Flow& b) { return a.output() < b.output(); });
}

// Which potentials the components of each group book.
std::map<std::pair<int, int>, std::string_view> bookedPotentials(const Model& model) {
    std::map<std::pair<int, int>, std::string_view> booked;
    for (const Component& component : model.components) {
        for (const Potential potential : component.type->potentials) {
            const auto unit = unitBooked(component, potential);
            if (!unit) continue;
            const auto [other, isNew] = booked.emplace(std::pair<int, int>(component.group, potential), *unit);
            if (!isNew && other->second != *unit) other->second = info(potential).unit;  // the checks warn of it
        }
    }
    return booked;
}

}  // namespace

const Flow* Results::find(OutputPort output) const {
    const auto found = std::lower_bound(flows.begin(), flows.end(), output,
                                        [](const Flow& flow, OutputPort wanted) { return flow.output() < wanted; });
    return found != flows.end() && found->output() == output ? &*found : nullptr;
}

std::vector<std::string> inputPaths(const Model& model, const Model* baseline) {
    std::set<std::string> files;
    for (const Model* one : {&model, baseline}) {
        if (!one) continue;
        files.insert(one->tableFiles.begin(), one->tableFiles.end());
        for (const TimeTable& table : one->tables) {
            files.insert(table.path);
        }
        if (!one->statesFile.empty()) files.insert(one->statesFile);
    }
    std::vector<std::string> paths{model.path};
    paths.insert(paths.end(), files.begin(), files.end());
    return paths;
}

std::vector<InputFile> inputsOf(const std::vector<std::string>& paths) {
    std::vector<InputFile> inputs;
    for (const std::string& path : paths) {
        inputs.push_back({path, sha256OfFile(path)});
    }
    return inputs;
}

Results collectResults(const Model& model, const Record& record, const EngineOutputs& outputs,
                       const RecordingPlan& plan, const EngineRun& run) {
    Results results{&model, run, run.stepsRun, {}, {}, {}, {}, {}};
    collectFlows(results, record, outputs, plan);
    const auto booked = bookedPotentials(model);
    const std::size_t groups = record.potentialGroups().size();
    for (std::size_t i = 0; i < groups; ++i) {
        for (std::size_t potential = 0; potential < kPotentials; ++potential) {
            const int group = record.potentialGroups()[i];
            const auto found = booked.find({group, static_cast<int>(potential)});
            if (found == booked.end()) continue;
            results.potentials.push_back({model.groups[at(group)].name, static_cast<Potential>(potential),
                                          found->second, outputs.potentials[potential * groups + i]});
        }
    }
    for (Flow& flow : results.flows) {
        flow.totals = totalsOf(flow.signals, results.steps);
    }
    for (PotentialSeries& series : results.potentials) {
        series.total = totalOf(series.values, results.steps);
    }
    for (const StateSeries& state : record.states()) {
        if (!state.isState) continue;
        results.states.push_back({model.components[at(state.component)].name, state.kind, state.unit, state.values});
    }
    return results;
}

}  // namespace kesto
