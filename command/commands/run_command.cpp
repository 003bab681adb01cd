#include <fmt/format.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
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
#include "results_checks.h"
#include "results_folder.h"
#include "strict.h"
#include "summary.h"
#include "summary_json.h"

namespace kesto {

namespace {

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

class Run {
  public:
    explicit Run(const RunOptions& options)
        : options_(options), loaded_(options.model, options.read), diagnostics_(loaded_.diagnostics()) {}

    int run() {
        if (loaded_.isFit()) plan();
        if (!loaded_.isFit()) return refuse(kBadModel);
        if (!prepareFolder()) return refuse(kRunFailed);
        diagnostics_.print(std::cerr, options_.quiet);
        const std::size_t told = diagnostics_.all().size();
        costs_.readSeconds = watch_.lap();

        Record record(loaded_.model(), loaded_.series(), plan_);
        Results results = simulate(record);
        const std::optional<Balance> balance = check(results);
        const Balance* const shown = options_.balance && balance ? &*balance : nullptr;
        const std::vector<std::string> files = write(results, shown);
        costs_.peakBytes = peakMemory();
        print(results, shown, files);
        diagnostics_.print(std::cerr, options_.quiet, told);
        if (diagnostics_.hasErrors()) return kRunFailed;
        return !options_.strict || passesStrictly("run", diagnostics_) ? kGood : kRunFailed;
    }

  private:
    // A balance needs all outputs; those that nobody asked for are not shown, and not complained of.
    void plan() {
        const Model& model = loaded_.model();
        asked_ = parseRecordChoice(model, options_.record, diagnostics_);
        plan_ = planRecordings(model, Network(model), needsBalance() ? allOutputs(model) : asked_);
        const std::set<OutputPort> wanted(asked_.begin(), asked_.end());
        RecordingPlan told = plan_;
        std::erase_if(told.refused, [&](const Refusal& refusal) { return !wanted.contains(refusal.output); });
        reportRefusals(model, told, options_.record != "all", diagnostics_);
    }

    bool needsBalance() const { return options_.balance || options_.strict; }

    // Rather told before the run than after an hour.
    bool prepareFolder() {
        try {
            if (!options_.output.empty()) makeFolder(options_.output);
            return true;
        } catch (const std::runtime_error& error) {
            reportUnwritten(error);
            return false;
        }
    }

    void reportUnwritten(const std::exception& error) {
        diagnostics_.error("cannot-write", {std::make_shared<const std::string>(options_.output), 0, 0}, error.what());
    }

    int refuse(int status) const {
        diagnostics_.print(std::cerr, options_.quiet);
        if (options_.json) std::cout << refusalJson(options_.model, diagnostics_);
        return status;
    }

    Results simulate(Record& record) {
        const Model& model = loaded_.model();
        std::vector<InputFile> inputs;
        if (options_.json || !options_.output.empty()) inputs = inputsOf(model);
        const EngineRun run = [&] {
            ProgressBar bar(!options_.quiet);
            return runEngine(record, [&](std::size_t done, std::size_t all) { bar.show(done, all); });
        }();
        costs_.engineSeconds = watch_.lap();
        Results results = collectResults(model, record, plan_, run);
        results.inputs = std::move(inputs);
        results.diagnostics = &diagnostics_;
        return results;
    }

    // What the run has left that cannot be. Flows that were recorded for the balance alone are then dropped.
    std::optional<Balance> check(Results& results) {
        reportFailure(results, diagnostics_);
        checkResults(results, diagnostics_);
        if (!needsBalance()) return std::nullopt;
        Balance balance = balanceOf(results, plan_, loaded_.series());
        checkBalance(results, balance, diagnostics_);
        const std::set<OutputPort> wanted(asked_.begin(), asked_.end());
        std::erase_if(results.flows,
                      [&](const Flow& flow) { return flow.port > 0 && !wanted.contains(flow.output()); });
        return balance;
    }

    // The summary is shown even when the files cannot be written.
    std::vector<std::string> write(const Results& results, const Balance* balance) {
        std::vector<std::string> files;
        try {
            if (!options_.output.empty()) {
                files = writeResults(results, balance, options_.read, options_.format, options_.output);
            }
        } catch (const std::exception& error) {
            reportUnwritten(error);
        }
        costs_.writeSeconds = watch_.lap();
        return files;
    }

    void print(const Results& results, const Balance* balance, const std::vector<std::string>& files) const {
        if (options_.json) {
            std::cout << summaryJson(results, balance, &costs_);
        } else if (!options_.quiet) {
            std::cout << summaryOf(results);
            if (balance) std::cout << toText(*balance);
            if (!files.empty()) std::cout << "\nResults\n";
            for (const std::string& file : files) {
                std::cout << "  " << file << '\n';
            }
        }
        std::cout.flush();
    }

    const RunOptions& options_;
    Watch watch_;
    LoadedModel loaded_;
    Diagnostics& diagnostics_;
    std::vector<OutputPort> asked_;
    RecordingPlan plan_;
    RunCosts costs_;
};

}  // namespace

int runCommand(const RunOptions& options) {
    return Run(options).run();
}

}  // namespace kesto
