#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "balance.h"
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

bool contains(const std::vector<OutputPort>& outputs, OutputPort output) {
    return std::find(outputs.begin(), outputs.end(), output) != outputs.end();
}

// A balance needs all outputs; those that nobody asked for are not shown, and not complained of.
RecordingPlan planFor(const LoadedModel& loaded, const std::vector<OutputPort>& asked, const RunOptions& options,
                      Diagnostics& diagnostics) {
    const Model& model = loaded.model();
    const RecordingPlan plan = planRecordings(model, Network(model), options.balance ? allOutputs(model) : asked);
    RecordingPlan told = plan;
    std::erase_if(told.refused, [&](const Refusal& refusal) { return !contains(asked, refusal.output); });
    reportRefusals(model, told, options.record != "all", diagnostics);
    return plan;
}

// A balance that does not close is told even to those who want to hear of errors alone.
void warnOfBalance(const Model& model, const Balance& balance) {
    for (const BalanceRow& row : balance.rows) {
        if (!row.isOff()) continue;
        std::cerr << fmt::format(
            "{}: WARNING: the balance of {}\"{}\" does not close: {:.6g} L are missing ({:.2g} of what went through; "
            "rounding explains {:.2g} L)\n",
            model.path,
            row.level == BalanceRow::Level::group     ? "group "
            : row.level == BalanceRow::Level::network ? "the network "
                                                      : "",
            row.name, row.error, row.relative, row.tolerance);
    }
}

void writeResults(const Results& results, const Balance* balance, const RunOptions& options) {
    std::vector<std::string> files;
    if (options.format == "netcdf") {
        files.push_back(writeNetcdf(results, balance, options.read, options.output));
    } else {
        files = writeCsv(results, options.output);
        if (balance) files.push_back(writeBalanceCsv(*balance, options.output));
    }
    files.push_back((std::filesystem::path(options.output) / "summary.json").string());
    std::ofstream summary(files.back(), std::ios::binary);
    summary << summaryJson(results, balance);
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
    std::vector<OutputPort> asked;
    RecordingPlan plan;
    if (loaded.isFit()) {
        const Model& model = loaded.model();
        asked = parseRecordChoice(model, options.record, diagnostics);
        plan = planFor(loaded, asked, options, diagnostics);
    }
    diagnostics.print(std::cerr, !options.quiet);
    if (!loaded.isFit()) return kBadModel;

    const Model& model = loaded.model();
    Record record(model, loaded.series(), plan);
    const EngineRun run = [&] {
        ProgressBar bar(!options.quiet);
        return runEngine(record, [&](std::size_t done, std::size_t all) { bar.show(done, all); });
    }();
    Results results = collectResults(model, record, plan, run);
    std::optional<Balance> balance;
    if (options.balance) {
        balance = balanceOf(results, plan, loaded.series());
        std::erase_if(results.flows, [&](const Flow& flow) {
            return flow.port > 0 && !contains(asked, {flow.component, flow.port});
        });
    }
    if (options.json) {
        std::cout << summaryJson(results, balance ? &*balance : nullptr);
    } else if (!options.quiet) {
        std::cout << summaryOf(results);
        if (balance) std::cout << toText(*balance);
    }
    if (!options.output.empty()) writeResults(results, balance ? &*balance : nullptr, options);
    std::cout.flush();
    reportFailure(results);
    if (balance) warnOfBalance(model, *balance);
    if (options.strict && balance && balance->isOff()) return kRunFailed;
    return run.outcome == Outcome::finished ? kGood : kRunFailed;
}

}  // namespace kesto
