#include <fmt/format.h>

#include <chrono>
#include <iostream>
#include <set>
#include <utility>

#include "balance.h"
#include "commands.h"
#include "engine_run.h"
#include "files.h"
#include "load.h"
#include "network.h"
#include "platform.h"
#include "progress_bar.h"
#include "record.h"
#include "record_choice.h"
#include "results_folder.h"
#include "summary.h"
#include "summary_json.h"

namespace kesto {

namespace {

// A balance needs all outputs; those that nobody asked for are not shown, and not complained of.
RecordingPlan planFor(const Model& model, const std::vector<OutputPort>& asked, const RunOptions& options,
                      Diagnostics& diagnostics) {
    const RecordingPlan plan = planRecordings(model, Network(model), options.balance ? allOutputs(model) : asked);
    const std::set<OutputPort> wanted(asked.begin(), asked.end());
    RecordingPlan told = plan;
    std::erase_if(told.refused, [&](const Refusal& refusal) { return !wanted.contains(refusal.output); });
    reportRefusals(model, told, options.record != "all", diagnostics);
    return plan;
}

Balance balanceWith(Results& results, const RecordingPlan& plan, SeriesValues& series,
                    const std::vector<OutputPort>& asked) {
    Balance balance = balanceOf(results, plan, series);
    const std::set<OutputPort> wanted(asked.begin(), asked.end());
    std::erase_if(results.flows, [&](const Flow& flow) { return flow.port > 0 && !wanted.contains(flow.output()); });
    return balance;
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

// Seconds since the last call, or since the program began to read.
class Watch {
  public:
    double lap() {
        const Clock::time_point now = Clock::now();
        return std::chrono::duration<double>(now - std::exchange(last_, now)).count();
    }

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point last_ = Clock::now();
};

void printSummary(const Results& results, const Balance* balance, const RunOptions& options, const RunCosts& costs) {
    if (options.json) {
        std::cout << summaryJson(results, balance, &costs);
    } else if (!options.quiet) {
        std::cout << summaryOf(results);
        if (balance) std::cout << toText(*balance);
    }
}

}  // namespace

int runCommand(const RunOptions& options) {
    Watch watch;
    LoadedModel loaded(options.model, options.read);
    Diagnostics& diagnostics = loaded.diagnostics();
    std::vector<OutputPort> asked;
    RecordingPlan plan;
    if (loaded.isFit()) {
        asked = parseRecordChoice(loaded.model(), options.record, diagnostics);
        plan = planFor(loaded.model(), asked, options, diagnostics);
    }
    diagnostics.print(std::cerr, options.quiet);
    if (!loaded.isFit()) return kBadModel;
    if (!options.output.empty()) makeFolder(options.output);  // rather told now than after an hour

    const Model& model = loaded.model();
    RunCosts costs;
    costs.readSeconds = watch.lap();
    Record record(model, loaded.series(), plan);
    const EngineRun run = [&] {
        ProgressBar bar(!options.quiet);
        return runEngine(record, [&](std::size_t done, std::size_t all) { bar.show(done, all); });
    }();
    costs.engineSeconds = watch.lap();
    Results results = collectResults(model, record, plan, run);
    std::optional<Balance> balance;
    if (options.balance) balance = balanceWith(results, plan, loaded.series(), asked);
    const Balance* const balanced = balance ? &*balance : nullptr;

    // The summary is shown even when the files cannot be written.
    std::vector<std::string> files;
    std::string failure;
    try {
        if (!options.output.empty())
            files = writeResults(results, balanced, options.read, options.format, options.output);
    } catch (const std::exception& error) {
        failure = error.what();
    }
    costs.writeSeconds = watch.lap();
    costs.peakBytes = peakMemory();
    printSummary(results, balanced, options, costs);
    if (!files.empty() && !options.quiet && !options.json) {
        std::cout << "\nResults\n";
        for (const std::string& file : files) {
            std::cout << "  " << file << '\n';
        }
    }
    std::cout.flush();
    if (run.outcome != Outcome::finished) std::cerr << failureOf(results) << '\n';
    if (balance) warnOfBalance(model, *balance);
    if (!failure.empty()) std::cerr << "kesto run: error: " << failure << '\n';
    const bool isStrictlyOff = options.strict && balance && balance->isOff();
    return run.outcome == Outcome::finished && failure.empty() && !isStrictlyOff ? kGood : kRunFailed;
}

}  // namespace kesto
