#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

#include "commands.h"
#include "display.h"
#include "engine_run.h"
#include "evaluation.h"
#include "files.h"
#include "going_on.h"
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
#include "run_ending.h"
#include "side_run.h"
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
        if (loaded_.isFit()) loadBaseline();
        if (loaded_.isFit()) plan();
        if (!loaded_.isFit()) return refuse(kBadModel);
        guard_.emplace();
        if (const int status = prepareFolder(); status != kGood) return refuse(status);
        tellMessages(std::cerr);
        costs_.readSeconds = watch_.lap();
        if (options_.json || !options_.output.empty()) inputs_ = inputsOf(filesRead());
        if (!runBaseline()) {
            const int status = refuse(kBadModel);
            guard_->passOn();  // when that is why
            return status;
        }
        Record record(loaded_.model(), loaded_.series(), needs_.plan);
        const Ending ending = simulate(record);
        folder_.reset();  // others may have it while a reader is slow
        tell(ending);
        guard_->passOn();
        return ending.status;
    }

    int runOutOfMemory() {
        const Ending ending = outOfMemory();
        tell(ending);
        return ending.status;
    }

  private:
    // The account needs outputs that nobody asked for: these are not shown, and not complained of.
    void plan() {
        const Model& model = loaded_.model();
        asked_ = parseRecordChoice(model, options_.record, diagnostics_);
        needs_ = needsOf(model, loaded_.series(), asked_, options_.balance || options_.strict);
        reportRefusals(model, refusedOf(needs_.plan, asked_), options_.record != "all", diagnostics_);
        if (model.simulation.goesOn) checkMemory(model, asked_, options_.read.approximate, diagnostics_);
    }

    // Rather told before the run than after an hour.
    int prepareFolder() {
        if (options_.output.empty()) return kGood;
        try {
            if (options_.format == "netcdf") requireNetcdf();
            folder_.emplace(options_.output, ResultsFormat{options_.format, options_.balance, options_.compression},
                            filesRead());
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

    void loadBaseline() {
        const Economics& economics = loaded_.model().economics;
        if (economics.baseline.empty()) return;
        ReadOptions read = options_.read;
        read.baseline = economics.baseline;
        baseline_.emplace(options_.model, read);
        if (!baseline_->isFit()) reportBaseline(baseline_->diagnostics().firstError()->text);
    }

    // False where it cannot be run.
    bool runBaseline() {
        if (!baseline_) return true;
        try {
            costsOfBaseline_ = costsOfBaseline(*baseline_);
            baseline_.reset();
            return true;
        } catch (const std::runtime_error& error) {
            reportBaseline(error.what());
            return false;
        }
    }

    void reportBaseline(const std::string& why) {
        const Economics& economics = loaded_.model().economics;
        diagnostics_.error("wrong-value", economics.place, withoutBaseline(economics, why));
    }

    std::vector<std::string> filesRead() const {
        return inputPaths(loaded_.model(), baseline_ ? &baseline_->model() : nullptr);
    }

    Place folderPlace() const { return {std::make_shared<const std::string>(options_.output), 0, 0}; }

    void reportUnwritten(const std::exception& error) {
        diagnostics_.error("cannot-write", folderPlace(), error.what());
    }

    void reportMemory() {
        if (std::exchange(isMemoryReported_, true)) return;
        const Model& model = loaded_.model();
        const RecordingPlan plan = planRecordings(model, Network(model), allOutputs(model));
        diagnostics_.error("out-of-memory", {std::make_shared<const std::string>(options_.model), 0, 0},
                           fmt::format("memory ran out; a run with all outputs recorded is expected to take {}",
                                       bytesToText(expectedMemory(model, plan))));
    }

    int refuse(int status) {
        tellMessages(std::cerr);
        if (options_.json) std::cout << refusalJson(options_.model, diagnostics_);
        return status;
    }

    Ending simulate(Record& record) {
        const auto conclude = [&](const EngineRun& run, const EngineOutputs& outputs) {
            try {
                return endingOf(record, run, outputs).toBytes();
            } catch (const std::bad_alloc&) {
                return outOfMemory().toBytes();
            }
        };
        try {
            ProgressBar bar(!options_.quiet);
            const auto show = [&](std::size_t done, std::size_t all) { bar.show(done, all); };
            return Ending::fromBytes(concludeRun(record, conclude, show, &*guard_));
        } catch (const std::runtime_error& error) {
            reportUnwritten(error);
            return failure();
        }
    }

    // In the engine's process, unless that has died.
    Ending endingOf(const Record& record, const EngineRun& run, const EngineOutputs& outputs) {
        costs_.engineSeconds = watch_.lap();
        if (folder_) folder_->stayLocked();
        Results results = collectResults(loaded_.model(), record, outputs, needs_.plan, run);
        results.inputs = inputs_;
        results.diagnostics = &diagnostics_;
        results.read = &options_.read;
        const Evaluation evaluation = check(results);
        const std::vector<WrittenFile> files = write(results, evaluation);
        costs_.peakBytes = peakMemory();
        std::ostringstream output, errors;
        print(results, evaluation, files, output);
        tellMessages(errors);
        const bool isGood =
            !diagnostics_.hasErrors() && (!options_.strict || passesStrictly("run", diagnostics_, errors));
        return {isGood ? kGood : kRunFailed, output.str(), errors.str()};
    }

    static void tell(const Ending& ending) {
        std::cout << ending.output << std::flush;
        std::cerr << ending.errors;
    }

    Ending outOfMemory() {
        reportMemory();
        return failure();
    }

    // Of a run that has left no results.
    Ending failure() {
        std::ostringstream errors;
        tellMessages(errors);
        return {kRunFailed, options_.json ? refusalJson(options_.model, diagnostics_) : "", errors.str()};
    }

    // Those that were not told before.
    void tellMessages(std::ostream& out) {
        diagnostics_.print(out, options_.quiet, told_);
        told_ = diagnostics_.all().size();
    }

    // What the run has left that cannot be. Flows that were recorded for the account alone are then dropped.
    Evaluation check(Results& results) {
        reportFailure(results, diagnostics_);
        if (results.run.message.starts_with("Cannot allocate memory")) reportMemory();
        checkResults(results, diagnostics_);
        Evaluation evaluation = evaluate(
            results, needs_, loaded_.series(),
            {.baseline = costsOfBaseline_ ? &*costsOfBaseline_ : nullptr, .kept = folder_ ? &asked_ : nullptr});
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
            if (folder_) files = folder_->write(results, evaluation);
        } catch (const std::exception& error) {
            reportUnwritten(error);
        }
        costs_.writeSeconds = watch_.lap();
        return files;
    }

    void print(const Results& results, const Evaluation& evaluation, const std::vector<WrittenFile>& files,
               std::ostream& out) const {
        if (options_.json) {
            out << summaryJson(results, evaluation, files, &costs_);
        } else if (!options_.quiet) {
            out << summaryOf(results, evaluation, options_.full ? Detail::full : Detail::brief);
            if (!files.empty()) {
                out << fmt::format("\nResults     {}, {} and {} other files\n", printable(options_.output),
                                   kSummaryFile, files.size());
            }
        }
    }

    const RunOptions& options_;
    Watch watch_;
    LoadedModel loaded_;
    Diagnostics& diagnostics_;
    std::vector<OutputPort> asked_;
    AccountNeeds needs_;
    RunCosts costs_;
    std::optional<LoadedModel> baseline_;  // until it has been run
    std::optional<NetworkCosts> costsOfBaseline_;
    std::vector<InputFile> inputs_;
    std::size_t told_ = 0;  // of the messages
    bool isMemoryReported_ = false;
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
