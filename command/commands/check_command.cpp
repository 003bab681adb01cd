#include <fmt/format.h>

#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "diagnostics_json.h"
#include "load.h"
#include "network.h"
#include "record.h"
#include "record_choice.h"
#include "strict.h"

namespace kesto {

namespace {

std::string bytes(double count) {
    if (count < 1e6) return fmt::format("{:.0f} kB", std::ceil(count / 1e3));
    return count < 1e9 ? fmt::format("{:.1f} MB", count / 1e6) : fmt::format("{:.1f} GB", count / 1e9);
}

// What a run with all outputs recorded will take: the engine's outputs are there twice while they are handed over.
double expectedMemory(const Model& model, const RecordingPlan& plan) {
    const auto steps = static_cast<double>(model.simulation.days());
    const auto outputs = static_cast<double>(plan.logged.size() + plan.fromOwnLog.size());
    double series = static_cast<double>(model.sources.size());
    double states = 0;
    for (const Component& component : model.components) {
        for (const SeriesNeed& need : component.type->series) {
            if (need.isState) ++states;
        }
    }
    for (const Group& group : model.groups) {
        if (group.uses != Group().uses) series += kUseKinds;
    }
    const double recorded = 2 * outputs * sizeof(Signal);
    const double potentials = 2.0 * static_cast<double>(kPotentials * model.groups.size()) * sizeof(float);
    return steps * (recorded + potentials + (series + states) * sizeof(float));
}

std::string counted(std::size_t count, std::string_view what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

// "2 errors, 1 warning", and notes where there are any.
std::string counts(const Diagnostics& diagnostics, bool withErrors) {
    std::string text = withErrors ? counted(diagnostics.count(Severity::error), "error") + ", " : "";
    text += counted(diagnostics.count(Severity::warning), "warning");
    const std::size_t notes = diagnostics.count(Severity::note);
    return notes == 0 ? text : text + ", " + counted(notes, "note");
}

void printJson(const std::string& path, const LoadedModel& loaded, double memory) {
    using Json = nlohmann::ordered_json;
    Json check{{"model", path}, {"fit", loaded.isFit()}};
    if (loaded.isFit()) {
        const Model& model = loaded.model();
        const Simulation& simulation = model.simulation;
        check.update({{"title", model.title},
                      {"start", toText(simulation.start)},
                      {"end", toText(simulation.end)},
                      {"steps", simulation.days()},
                      {"days_per_step", simulation.timeStep},
                      {"components", model.components.size()},
                      {"connections", model.connections.size()},
                      {"expected_bytes", memory}});
    }
    check["errors"] = errorRows(loaded.diagnostics());
    check["warnings"] = warningRows(loaded.diagnostics());
    std::cout << check.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void printText(const std::string& path, const LoadedModel& loaded, double memory) {
    if (!loaded.isFit()) {
        std::cerr << counts(loaded.diagnostics(), true) << '\n';
        return;
    }
    const Model& model = loaded.model();
    std::cout << fmt::format(
        "{}: fit to run, {}\n{} components, {} connections, {} steps ({} to {})\n{} for a run with all outputs "
        "recorded\n",
        path, counts(loaded.diagnostics(), false), model.components.size(), model.connections.size(),
        model.simulation.days(), toText(model.simulation.start), toText(model.simulation.end), bytes(memory));
}

}  // namespace

int checkCommand(const CheckOptions& options) {
    LoadedModel loaded(options.model, options.read);
    double memory = 0;
    if (loaded.isFit()) {
        const Model& model = loaded.model();
        const RecordingPlan plan = planRecordings(model, Network(model), allOutputs(model));
        reportRefusals(model, plan, false, loaded.diagnostics());
        memory = expectedMemory(model, plan);
    }
    loaded.diagnostics().print(std::cerr);
    (options.json ? printJson : printText)(options.model, loaded, memory);
    if (!loaded.isFit()) return kBadModel;
    return !options.strict || passesStrictly("check", loaded.diagnostics()) ? kGood : kRunFailed;
}

}  // namespace kesto
