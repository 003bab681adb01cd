#include <fmt/format.h>

#include <iostream>

#include "commands.h"
#include "engine_run.h"
#include "load.h"
#include "results_csv.h"
#include "summary.h"

namespace kesto {

namespace {

// What went wrong, when, and in which component.
void reportFailure(const Results& results) {
    const EngineRun& run = results.run;
    const Model& model = *results.model;
    std::string when = "before the first step";
    if (run.step >= 0 && run.step < model.simulation.days()) {
        when = fmt::format("on {}, step {} of {}", toText(results.dayOf(static_cast<std::size_t>(run.step))),
                           run.step + 1, model.simulation.days());
    }
    switch (run.outcome) {
        case Outcome::finished:
            return;
        case Outcome::failed:
            std::cerr << fmt::format("{}: error: the run stopped {}: {}\n", model.path, when,
                                     explainMessage(run.message, model));
            return;
        case Outcome::crashed:
            std::cerr << fmt::format("{}: error: the engine gave up {}: {}\n", model.path, when, run.message);
            return;
        case Outcome::interrupted:
            std::cerr << fmt::format("{}: interrupted {}\n", model.path, when);
            return;
    }
}

}  // namespace

int runCommand(const RunOptions& options) {
    LoadedModel loaded(options.model);
    loaded.diagnostics().print(std::cerr);
    if (!loaded.isFit()) return kBadModel;
    const Model& model = loaded.model();

    const Network network(model);
    const RecordingPlan plan = planRecordings(model, network, allOutputs(model));
    Record record(model, loaded.series(), plan);
    const EngineRun run = runEngine(record);
    const Results results = collectResults(model, record, plan, run);
    std::cout << summaryOf(results);
    if (!options.output.empty()) {
        std::cout << "\nResults\n";
        for (const std::string& file : writeCsv(results, options.output)) {
            std::cout << "  " << file << '\n';
        }
    }
    std::cout.flush();
    reportFailure(results);
    return run.outcome == Outcome::finished ? kGood : kRunFailed;
}

}  // namespace kesto
