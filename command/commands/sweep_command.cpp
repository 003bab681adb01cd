#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "commands.h"
#include "diagnostics_json.h"
#include "display.h"
#include "files.h"
#include "json_reading.h"
#include "model_reader.h"
#include "platform.h"
#include "progress_bar.h"
#include "replaced_values.h"
#include "results_netcdf.h"
#include "summary_json.h"
#include "sweep_join.h"
#include "sweep_part.h"
#include "sweep_run.h"
#include "sweep_summary.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

Place placeOf(const std::string& argument) {
    return {std::make_shared<const std::string>(argument), 0, 0};
}

// "3-12"; none where it is no slice of the members.
std::optional<Slice> sliceOf(const std::string& text, std::size_t members) {
    if (text.empty()) return Slice{1, members};
    Slice slice;
    const char* const end = text.data() + text.size();
    const auto [dash, error] = std::from_chars(text.data(), end, slice.first);
    if (error != std::errc{} || dash == end || *dash != '-') return std::nullopt;
    const auto [rest, wrong] = std::from_chars(dash + 1, end, slice.last);
    const bool isGood = wrong == std::errc{} && rest == end && slice.first >= 1 && slice.first <= slice.last;
    return isGood && slice.last <= members ? std::optional(slice) : std::nullopt;
}

// They may be those of an earlier sweep, as its file has them now.
int show(const Json& members, const SweepOptions& options) {
    return readingJson(joined(options.output, kMembersFile), "kesto sweep", [&] {
        if (options.json) {
            std::cout << members.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
        } else if (!options.quiet) {
            std::cout << sweepText(members, options.output);
        }
        return unfinishedIn(members) == 0 ? kGood : kRunFailed;
    });
}

// What a join, which runs nothing, has no use for.
bool setsMembers(const SweepOptions& options) {
    const SweepOptions none;
    const ReadOptions& read = options.read;
    return options.jobs != none.jobs || options.record != none.record || options.every != none.every ||
           options.figures != none.figures || options.members != none.members || options.format != none.format ||
           !read.set.empty() || !read.scenarios.empty() || !read.from.empty() || !read.to.empty() ||
           !read.accept.empty();
}

int join(const SweepOptions& options) {
    const auto refuse = [](int status, const std::string& text) {
        std::cerr << "kesto sweep --join: error: " << printable(text) << '\n';
        return status;
    };
    if (!options.model.empty() || !options.table.empty() || !options.vary.empty() || options.scenarios) {
        return refuse(kBadModel, "it takes folders of slices alone, and no model or members");
    }
    if (setsMembers(options)) {
        return refuse(kBadModel,
                      "it takes folders of slices alone; values, --record and the like are those of the slices");
    }
    try {
        return show(joinSlices(options.join, options.output, options.restart), options);
    } catch (const NotReplaceable& refusal) {
        return refuse(kBadModel, refusal.what());
    } catch (const FolderBusy& busy) {
        return refuse(kRunFailed, busy.what());
    } catch (const std::runtime_error& error) {
        return refuse(kBadModel, error.what());
    }
}

class Sweep {
  public:
    explicit Sweep(const SweepOptions& options) : options_(options) {}

    int run() {
        if (!read()) return refuse(kBadModel);
        InterruptGuard guard;
        try {
            if (!check(guard)) return guard.passOn(), refuse(kBadModel);
            SweepParts parts(input_->shape ? &*input_->shape : nullptr, slice_, attributes(), format());
            SweepFolder folder(options_.output, madeOf(inputs_, input_->design, optionsJson(), slice_), slice_,
                               filesRead(), parts.names(), options_.restart);
            diagnostics_.print(std::cerr, options_.quiet);
            told_ = diagnostics_.all().size();
            if (!folder.finished()) runAll(parts, folder, guard);
            return finish(parts, folder, guard);
        } catch (const NotReplaceable& refusal) {
            diagnostics_.error(refusal.name, placeOf(options_.output), refusal.what());
            return refuse(kBadModel);
        } catch (const FolderBusy& busy) {
            diagnostics_.error("folder-busy", placeOf(options_.output), busy.what());
        } catch (const std::runtime_error& error) {
            diagnostics_.error("cannot-write", placeOf(options_.output), error.what());
        }
        return refuse(kRunFailed);
    }

  private:
    bool read() {
        auto document = readDocument(options_.model, diagnostics_);
        if (!document) return false;
        if (options_.record == "none" && (options_.every != "day" || !options_.format.empty())) {
            diagnostics_.error("wrong-value", placeOf(options_.every != "day" ? "--every" : "--format"),
                               "nothing is recorded; expected --record, too");
        }
        auto design = Design::read({options_.table, options_.vary, options_.scenarios}, *document, diagnostics_);
        if (!design || diagnostics_.hasErrors()) return false;
        const auto slice = sliceOf(options_.members, design->members());
        if (!slice) {
            diagnostics_.error(
                "wrong-value", placeOf("--members " + options_.members),
                fmt::format("expected FIRST-LAST, both from 1 to {}, the number of members", design->members()));
            return false;
        }
        slice_ = *slice;
        warnOfReplaced(*document, options_.read, *design, diagnostics_);
        input_.emplace(SweepInput{std::move(*document), options_.read, std::move(*design), options_.record,
                                  *everyFrom(options_.every), options_.figures == "all"});
        return true;
    }

    // The first member is checked here, so that what all of them read stands in memory when the others are.
    bool check(const InterruptGuard& guard) {
        input_->baselines = {input_->document, input_->read, input_->design, slice_.first, slice_.last};
        Diagnostics first;
        std::set<std::string> files;
        checkMember(*input_, slice_.first, first, files);
        diagnostics_.acceptAs(first);
        if (options_.record != "none") {
            requireParts(format());
            input_->shape = shapeOf(*input_, slice_.first);
        }
        ProgressBar bar(!options_.quiet, "members checked");
        SweepCheck check = checkMembers(
            *input_, slice_, jobs(), [&](std::size_t done, std::size_t all) { bar.show(done, all); }, guard);
        inputs_ = {options_.model};
        check.files.erase(options_.model);
        inputs_.insert(inputs_.end(), check.files.begin(), check.files.end());
        check.findings.tell(slice_.size(), diagnostics_);
        findings_ = std::move(check.findings);
        return !diagnostics_.hasErrors() && !guard.wasInterrupted();
    }

    std::vector<std::string> filesRead() const {
        std::vector<std::string> files = inputs_;
        if (!options_.table.empty()) files.push_back(options_.table);
        return files;
    }

    std::size_t jobs() const {
        const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
        return std::min(options_.jobs > 0 ? options_.jobs : cores, slice_.size());
    }

    PartFormat format() const {
        const bool isCsv = options_.format.empty() ? !hasNetcdf() : options_.format == "csv";
        return isCsv ? PartFormat::csv : PartFormat::netcdf;
    }

    Json optionsJson() const {
        const ReadOptions& read = options_.read;
        Json options{{"scenario", read.scenarios}, {"set", read.set},
                     {"from", read.from},          {"to", read.to},
                     {"accept", read.accept},      {"record", options_.record},
                     {"every", options_.every},    {"figures", options_.figures}};
        if (input_->shape && format() == PartFormat::csv) options["format"] = "csv";
        return options;
    }

    SweepAttributes attributes() const {
        return {
            {"source", "KESTO " KESTO_VERSION}, {"model", options_.model}, {"design_sha256", input_->design.sha256()}};
    }

    void runAll(SweepParts& parts, SweepFolder& folder, const InterruptGuard& guard) {
        ProgressBar bar(!options_.quiet, "members");
        runMembers(
            *input_, slice_, jobs(), parts, folder, [&](std::size_t done, std::size_t all) { bar.show(done, all); },
            guard);
    }

    int finish(const SweepParts& parts, SweepFolder& folder, InterruptGuard& guard) {
        if (guard.wasInterrupted()) return stop(folder, guard);
        if (!folder.finished()) writeAll(parts, folder);
        diagnostics_.print(std::cerr, options_.quiet, told_);
        return show(*folder.finished(), options_);
    }

    void writeAll(const SweepParts& parts, SweepFolder& folder) {
        const SweepSummary summary = writeMembersTable(folder.aside(kMembersTable), cells(), slice_, folder.journal());
        std::vector<WrittenFile> files{folder.fileAside(kMembersTable)};
        for (const std::string& part : parts.names()) {
            files.push_back(*folder.journal().part(part));
        }
        summary.findings.tell(slice_.size(), diagnostics_);
        findings_.add(summary.findings.rows());
        folder.finish(membersJson({options_.model, title(), options_.table, keyUnits(*input_, slice_.first)},
                                  folder.madeOf(), summary, findings_, files));
    }

    MemberCells cells() const {
        const Design& design = input_->design;
        return {design.keys(), [&design](std::size_t member) { return design.cellsOf(member); }};
    }

    std::string title() const {
        const Value* title = input_->document.file.field("title");
        return title ? title->text : std::string();
    }

    int stop(SweepFolder& folder, InterruptGuard& guard) const {
        std::size_t done = 0;
        for (std::size_t member = slice_.first; member <= slice_.last; ++member) {
            if (folder.journal().has(member)) ++done;
        }
        std::cerr << fmt::format("kesto sweep: stopped after {} of {} members; the same command goes on\n", done,
                                 slice_.size());
        guard.passOn();
        return kRunFailed;
    }

    int refuse(int status) {
        diagnostics_.print(std::cerr, options_.quiet, told_);
        if (options_.json) std::cout << refusalJson(options_.model, diagnostics_);
        return status;
    }

    const SweepOptions& options_;
    Diagnostics diagnostics_;
    std::size_t told_ = 0;  // of them
    Slice slice_;
    std::optional<SweepInput> input_;
    std::vector<std::string> inputs_;  // files
    Findings findings_;
};

}  // namespace

int sweepCommand(const SweepOptions& options) {
    if (!options.join.empty()) return join(options);
    if (!options.model.empty()) return Sweep(options).run();
    std::cerr << "kesto sweep: error: expected a model, or --join and the folders of slices\n";
    return kBadModel;
}

}  // namespace kesto
