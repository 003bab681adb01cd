#include <fmt/format.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
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
        guard_.emplace();
        if (const int status = prepareFolder(); status != kGood) return refuse(status);
        diagnostics_.print(std::cerr, options_.quiet);
        const std::size_t told = diagnostics_.all().size();
        costs_.readSeconds = watch_.lap();

        Record record(loaded_.model(), loaded_.series(), needs_.plan);
        Results results = simulate(record);
        const Evaluation evaluation = check(results);
        const std::vector<WrittenFile> files = write(results, evaluation);
        costs_.peakBytes = peakMemory();
        print(results, evaluation, files);
        diagnostics_.print(std::cerr, options_.quiet, told);
        guard_->passOn();
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
    int prepareFolder() {
        if (options_.output.empty()) return kGood;
        try {
            if (options_.format == "netcdf") requireNetcdf();
            folder_.emplace(options_.output, ResultsFormat{options_.format, options_.balance, options_.compression},
                            inputPaths(loaded_.model()));
            return kGood;
        } catch (const NotReplaceable& refusal) {
            diagnostics_.error(refusal.name, folderPlace(), refusal.what());
            return kBadModel;
        } catch (const FolderBusy& busy) {
            diagnostics_.error("folder-busy", folderPlace(), busy.what());
        } catch (const std::runtime_error& error) {
            reportUnwritten(error);
        }
        return kRunFailed;
    }

    Place folderPlace() const { return {std::make_shared<const std::string>(options_.output), 0, 0}; }

    void reportUnwritten(const std::exception& error) {
        diagnostics_.error("cannot-write", folderPlace(), error.what());
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
            return runEngine(
                record, [&](std::size_t done, std::size_t all) { bar.show(done, all); }, &*guard_);
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
    std::vector<WrittenFile> write(const Results& results, const Evaluation& evaluation) {
        std::vector<WrittenFile> files;
        try {
            if (folder_) files = folder_->write(results, evaluation, options_.read);
        } catch (const std::exception& error) {
            reportUnwritten(error);
        }
        folder_.reset();  // others may have it while a reader is slow
        costs_.writeSeconds = watch_.lap();
        return files;
    }

    void print(const Results& results, const Evaluation& evaluation, const std::vector<WrittenFile>& files) const {
        if (options_.json) {
            std::cout << summaryJson(results, evaluation, files, &costs_);
        } else if (!options_.quiet) {
            std::cout << summaryOf(results, evaluation);
            if (!files.empty()) std::cout << "\nResults\n";
            for (const WrittenFile& file : files) {
                std::cout << "  " << joined(options_.output, file.name) << '\n';
            }
            if (!files.empty()) std::cout << "  " << joined(options_.output, kSummaryFile) << '\n';
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
    std::optional<InterruptGuard> guard_;  // from when something is written on
    std::optional<ResultsFolder> folder_;
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
