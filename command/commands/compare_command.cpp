#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "commands.h"
#include "compare_page.h"
#include "compared_members.h"
#include "comparison.h"
#include "display.h"
#include "files.h"
#include "load.h"
#include "model_reader.h"
#include "output_file.h"
#include "run_apart.h"
#include "side_run.h"

namespace kesto {

namespace {

constexpr std::size_t kMostRuns = 12;      // on a page
constexpr std::size_t kMostPoints = 5000;  // of a sweep, likewise
constexpr char kAsItIs[] = "as it is";     // a model without a scenario

// The ending says what is written: a page, or else a table.
bool isPage(const std::string& output) {
    const std::string ending = nameOf(pathOf(output).extension());
    return ending == ".html" || ending == ".htm";
}

// Runs a model with a scenario, or without one; nothing where it cannot be run, which is reported.
std::optional<ComparedRun> runOf(const std::string& path, ReadOptions read, const std::string& scenario,
                                 bool isForPage) {
    if (!scenario.empty()) read.scenarios.push_back(scenario);
    LoadedModel loaded(path, read);
    loaded.diagnostics().print(std::cerr, true);
    if (!loaded.isFit()) return std::nullopt;
    const Model& model = loaded.model();
    ComparedRun run;
    runBeside(loaded, isForPage, [&](const Results& results, const Evaluation& evaluation) {
        run = comparedRun(kAsItIs, results, evaluation);
    });
    const auto add = [&](const char* option, const std::string& text) {
        if (!text.empty()) run.made.options.emplace_back(option, text);
    };
    for (const std::string& one : read.scenarios)
        add("--scenario", one);
    for (const std::string& one : read.set)
        add("--set", one);
    add("--from", read.from);
    add("--to", read.to);
    for (const Scenario& one : model.scenarios) {
        if (one.name != scenario) continue;
        run.name = scenario;
        run.set = {"--scenario " + scenario};
        if (!one.title.empty()) run.title = one.title;
    }
    return run;
}

// The model itself, then each of its scenarios.
std::optional<std::vector<ComparedRun>> runScenarios(const CompareOptions& options) {
    const std::string& path = options.runs.front();
    const LoadedModel loaded(path, options.read);
    if (!loaded.isFit()) {
        loaded.diagnostics().print(std::cerr, true);
        return std::nullopt;
    }
    if (loaded.model().scenarios.empty()) {
        std::cerr << fmt::format("{}: error: there are no scenarios; expected [scenarios.NAME]\n", printable(path));
        return std::nullopt;
    }
    std::vector<std::string> names{""};
    for (const Scenario& scenario : loaded.model().scenarios) {
        names.push_back(scenario.name);
    }
    std::vector<ComparedRun> runs;
    for (const std::string& name : names) {
        auto run = runOf(path, options.read, name, isPage(options.output));
        if (!run) return std::nullopt;
        runs.push_back(std::move(*run));
    }
    return runs;
}

constexpr std::size_t kMostMembers = 6;

// What fits side by side, unless members are named.
void readMembers(const std::string& folder, const std::vector<std::size_t>& members, std::vector<ComparedRun>& runs) {
    ComparedMembers compared = readComparedMembers(folder, members, kMostMembers);
    if (members.empty() && compared.all > compared.runs.size()) {
        std::cerr << fmt::format("kesto compare: note: {}: the first {} of {} members; --members names others\n",
                                 printable(folder), compared.runs.size(), withThousands(compared.all));
    }
    std::move(compared.runs.begin(), compared.runs.end(), std::back_inserter(runs));
}

std::optional<std::vector<ComparedRun>> readRuns(const CompareOptions& options) {
    std::vector<ComparedRun> runs;
    std::vector<std::size_t> members;
    try {
        members = parseMembers(options.members);
    } catch (const std::exception& error) {
        std::cerr << fmt::format("kesto compare: error: {}\n", printable(error.what()));
        return std::nullopt;
    }
    for (const std::string& folder : options.runs) {
        try {
            if (isSweep(folder)) {
                readMembers(folder, members, runs);
            } else {
                runs.push_back(readComparedRun(folder));
            }
        } catch (const std::exception& error) {
            std::cerr << fmt::format(
                "{}: error: {}; expected a folder that \"kesto run -o\" or \"kesto sweep -o\" wrote\n",
                printable(folder), printable(error.what()));
            return std::nullopt;
        }
    }
    return runs;
}

bool isGood(const CompareOptions& options) {
    const std::size_t count = options.runs.size();
    const char* wrong = nullptr;
    if (options.scenarios && count != 1) wrong = "--scenarios takes one model";
    const bool hasSweep = std::any_of(options.runs.begin(), options.runs.end(), isSweep);
    if (!options.scenarios && count < 2 && !hasSweep) {
        wrong = "expected two folders of results or more, that of a sweep, or a model and --scenarios";
    }
    if (!options.members.empty() && !hasSweep)
        wrong = "--members are those of a sweep, and none of the folders has one";
    const ReadOptions& read = options.read;
    const bool changesModel = !read.scenarios.empty() || !read.set.empty() || !read.from.empty() || !read.to.empty();
    if (!options.scenarios && changesModel) {
        wrong = "--scenario, --set, --from and --to change a model: they need --scenarios, since folders hold results";
    }
    if (wrong) std::cerr << "kesto compare: error: " << wrong << '\n';
    return !wrong;
}

// What the command reads, over none of which it writes.
std::vector<std::string> filesRead(const CompareOptions& options) {
    std::vector<std::string> files = options.runs;
    for (const std::string& run : options.runs) {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(pathOf(run), error)) {
            files.push_back(nameOf(entry.path()));
        }
    }
    if (!options.scenarios) return files;
    Diagnostics ignored;
    if (const auto model = readModel(options.runs.front(), ignored, options.read)) {
        const std::vector<std::string> inputs = inputPaths(*model);
        files.insert(files.end(), inputs.begin(), inputs.end());
    }
    return files;
}

std::string whyNotTo(const CompareOptions& options) {
    constexpr std::string_view kTable = "figure,unit,", kPage = "<!doctype html";
    if (options.output.empty()) return {};
    return whyNotOver(options.output, filesRead(options), {isPage(options.output) ? &kPage : &kTable, 1});
}

// Broken results may crash the library that reads them.
void writePage(const CompareOptions& options, std::vector<ComparedRun> runs) {
    const auto sweep = std::find_if(options.runs.begin(), options.runs.end(), isSweep);
    const bool hasSweep = sweep != options.runs.end() && !options.scenarios;
    if (hasSweep && options.runs.size() == 1 && options.members.empty()) runs.clear();
    if (runs.size() > kMostRuns) {
        throw std::runtime_error(fmt::format("a page shows {} runs at most, and these are {}", kMostRuns, runs.size()));
    }
    std::chrono::seconds longest(0);
    for (const std::string& run : options.runs) {
        longest += longestReading(run);
    }
    runApart("cannot read the results, which may be broken", longest, [&] {
        std::optional<ComparedSweep> compared;
        if (hasSweep) compared = readComparedSweep(*sweep, kMostPoints);
        replaceFile(options.output, comparePage(compare(runs, true), compared ? &*compared : nullptr));
    });
}

}  // namespace

int compareCommand(const CompareOptions& options) {
    if (!isGood(options)) return kBadModel;
    const auto refuse = [](const std::string& why) {
        std::cerr << fmt::format("kesto compare: error: {}\n", printable(why));
        return kBadModel;
    };
    if (const std::string why = whyNotTo(options); !why.empty()) return refuse(why);
    auto runs = options.scenarios ? runScenarios(options) : readRuns(options);
    if (!runs) return kBadModel;
    if (isPage(options.output)) {
        try {
            writePage(options, *runs);
        } catch (const std::exception& error) {
            return refuse(error.what());
        }
    }
    const Comparison comparison = compare(std::move(*runs), options.all);
    for (const std::string& warning : comparison.warnings) {
        std::cerr << "kesto compare: warning: " << printable(warning) << '\n';
    }
    if (!options.output.empty() && !isPage(options.output)) replaceFile(options.output, toCsv(comparison));
    std::cout << (options.json ? toJson(comparison) : printableLines(toText(comparison)));
    return kGood;
}

}  // namespace kesto
