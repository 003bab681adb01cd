#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <iostream>

#include "commands.h"
#include "engine_run.h"
#include "load.h"
#include "progress_bar.h"
#include "record_choice.h"
#include "results_csv.h"
#include "results_netcdf.h"
#include "summary.h"
#include "summary_json.h"

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

void writeResults(const Results& results, const RunOptions& options) {
    std::vector<std::string> files;
    if (options.format == "netcdf") {
        files.push_back(writeNetcdf(results, options.read, options.output));
    } else {
        files = writeCsv(results, options.output);
    }
    files.push_back((std::filesystem::path(options.output) / "summary.json").string());
    std::ofstream summary(files.back(), std::ios::binary);
    summary << summaryJson(results);
    summary.close();
    if (!summary) throw std::runtime_error(fmt::format("cannot write {}", files.back()));
    if (options.quiet || options.json) return;
    std::cout << "\nResults\n";
    for (const std::string& file : files) {
        std::cout << "  " << file << '\n';
    }
}

}  // namespace

int runCommand(const RunOptions& options) {
    LoadedModel loaded(options.model, options.read);
    Diagnostics& diagnostics = loaded.diagnostics();
    RecordingPlan plan;
    if (loaded.isFit()) {
        const Model& model = loaded.model();
        plan = planRecordings(model, Network(model), parseRecordChoice(model, options.record, diagnostics));
        reportRefusals(model, plan, options.record != "all", diagnostics);
    }
    diagnostics.print(std::cerr, !options.quiet);
    if (!loaded.isFit()) return kBadModel;

    const Model& model = loaded.model();
    Record record(model, loaded.series(), plan);
    const EngineRun run = [&] {
        ProgressBar bar(!options.quiet);
        return runEngine(record, [&](std::size_t done, std::size_t all) { bar.show(done, all); });
    }();
    const Results results = collectResults(model, record, plan, run);
    if (options.json) {
        std::cout << summaryJson(results);
    } else if (!options.quiet) {
        std::cout << summaryOf(results);
    }
    if (!options.output.empty()) writeResults(results, options);
    std::cout.flush();
    reportFailure(results);
    return run.outcome == Outcome::finished ? kGood : kRunFailed;
}

}  // namespace kesto
