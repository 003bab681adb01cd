#include <fmt/format.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <new>
#include <set>
#include <utility>

#include "commands.h"
#include "engine_run.h"
#include "evaluation.h"
#include "files.h"
#include "load.h"
#include "memory_estimate.h"
#include "network.h"
#include "platform.h"
#include "progress_bar.h"
#include "record.h"
#include "record_choice.h"
#include "results_checks.h"
#include "results_folder.h"
#include "results_netcdf.h"
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

        Record record(loaded_.model(), loaded_.series(), needs_.plan);
        Results results = simulate(record);
        const Evaluation evaluation = check(results);
        const std::vector<std::string> files = write(results, evaluation);
        costs_.peakBytes = peakMemory();
        print(results, evaluation, files);
        diagnostics_.print(std::cerr, options_.quiet, told);
        if (diagnostics_.hasErrors()) return kRunFailed;
        return !options_.strict || passesStrictly("run", diagnostics_) ? kGood : kRunFailed;
    }

    int runOutOfMemory() {
        const std::size_t told = diagnostics_.all().size();
        reportMemory();
        diagnostics_.print(std::cerr, options_.quiet, told);
        if (options_.json) std::cout << refusalJson(options_.model, diagnostics_);
        return kRunFailed;
    }

  private:
    // The account needs outputs that nobody asked for: these are not shown, and not complained of.
    void plan() {
        const Model& model = loaded_.model();
        asked_ = parseRecordChoice(model, options_.record, diagnostics_);
        needs_ = needsOf(model, loaded_.series(), asked_, options_.balance || options_.strict);
        const std::set<OutputPort> wanted(asked_.begin(), asked_.end());
        RecordingPlan told = needs_.plan;
        std::erase_if(told.refused, [&](const Refusal& refusal) { return !wanted.contains(refusal.output); });
        reportRefusals(model, told, options_.record != "all", diagnostics_);
    }

    // Rather told before the run than after an hour.
    bool prepareFolder() {
        try {
            if (!options_.output.empty()) makeFolder(options_.output);
            if (!options_.output.empty() && options_.format == "netcdf") requireNetcdf();
            return true;
        } catch (const std::runtime_error& error) {
            reportUnwritten(error);
            return false;
        }
    }

    void reportUnwritten(const std::exception& error) {
        diagnostics_.error("cannot-write", {std::make_shared<const std::string>(options_.output), 0, 0}, error.what());
    }

    void reportMemory() {
        const Model& model = loaded_.model();
        const RecordingPlan plan = planRecordings(model, Network(model), allOutputs(model));
        diagnostics_.error("out-of-memory", {std::make_shared<const std::string>(options_.model), 0, 0},
                           fmt::format("memory ran out; a run with all outputs recorded is expected to take {}",
                                       bytesToText(expectedMemory(model, plan))));
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
        Results results = collectResults(model, record, needs_.plan, run);
        results.inputs = std::move(inputs);
        results.diagnostics = &diagnostics_;
        return results;
    }

    // What the run has left that cannot be. Flows that were recorded for the account alone are then dropped.
    Evaluation check(Results& results) {
        reportFailure(results, diagnostics_);
        if (results.run.message.starts_with("Cannot allocate memory")) reportMemory();
        checkResults(results, diagnostics_);
        Evaluation evaluation = evaluate(results, needs_, loaded_.series());
        evaluation.showsBalance = options_.balance;
        checkAccount(results, evaluation.account, diagnostics_);
        if (options_.balance || options_.strict) checkBalance(results, evaluation.balance, diagnostics_);
        const std::set<OutputPort> wanted(asked_.begin(), asked_.end());
        std::erase_if(results.flows,
                      [&](const Flow& flow) { return flow.port > 0 && !wanted.contains(flow.output()); });
        return evaluation;
    }

    // The summary is shown even when the files cannot be written.
    std::vector<std::string> write(const Results& results, const Evaluation& evaluation) {
        std::vector<std::string> files;
        try {
            if (!options_.output.empty()) {
                files = writeResults(results, evaluation, options_.read, options_.format, options_.output);
            }
        } catch (const std::exception& error) {
            reportUnwritten(error);
        }
        costs_.writeSeconds = watch_.lap();
        return files;
    }

    void print(const Results& results, const Evaluation& evaluation, const std::vector<std::string>& files) const {
        if (options_.json) {
            std::cout << summaryJson(results, evaluation, &costs_);
        } else if (!options_.quiet) {
            std::cout << summaryOf(results, evaluation);
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
    AccountNeeds needs_;
    RunCosts costs_;
};

}  // namespace

int runCommand(const RunOptions& options) {
    Run run(options);
    try {
        return run.run();
    } catch (const std::bad_alloc&) {
        return run.runOutOfMemory();
    }
}

}  // namespace kesto
