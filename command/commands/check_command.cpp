#include <fmt/format.h>

#include <iostream>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "diagnostics_json.h"
#include "display.h"
#include "load.h"
#include "memory_estimate.h"
#include "network.h"
#include "record.h"
#include "record_choice.h"
#include "strict.h"

namespace kesto {

namespace {

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
        printable(path), counts(loaded.diagnostics(), false), model.components.size(), model.connections.size(),
        model.simulation.days(), toText(model.simulation.start), toText(model.simulation.end), bytesToText(memory));
}

// What each scenario adds to the errors and warnings of the model itself.
void checkScenarios(const CheckOptions& options, LoadedModel& loaded) {
    for (const Scenario& scenario : loaded.model().scenarios) {
        ReadOptions read = options.read;
        read.scenarios = {scenario.name};
        const LoadedModel changed(options.model, read);
        loaded.diagnostics().addNew(changed.diagnostics(), fmt::format("scenario \"{}\": ", scenario.name));
    }
}

}  // namespace

int checkCommand(const CheckOptions& options) {
    LoadedModel loaded(options.model, options.read);
    double memory = 0;
    if (loaded.isFit()) {
        const Model& model = loaded.model();
        const RecordingPlan plan = planRecordings(model, Network(model), allOutputs(model));
        reportRefusals(model, plan.refused, false, loaded.diagnostics());
        memory = expectedMemory(model, plan);
    }
    if (loaded.isFit() && options.read.scenarios.empty()) checkScenarios(options, loaded);
    loaded.diagnostics().print(std::cerr);
    (options.json ? printJson : printText)(options.model, loaded, memory);
    if (!loaded.isFit()) return kBadModel;
    return !options.strict || passesStrictly("check", loaded.diagnostics(), std::cerr) ? kGood : kRunFailed;
}

}  // namespace kesto
