#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "commands.h"
#include "compared_members.h"
#include "comparison.h"
#include "display.h"
#include "files.h"
#include "load.h"
#include "output_file.h"
#include "side_run.h"

namespace kesto {

namespace {

// Runs a model with a scenario, or without one; nothing where it cannot be run, which is reported.
std::optional<ComparedRun> runOf(const std::string& path, ReadOptions read, const std::string& scenario) {
    if (!scenario.empty()) read.scenarios.push_back(scenario);
    LoadedModel loaded(path, read);
    loaded.diagnostics().print(std::cerr, true);
    if (!loaded.isFit()) return std::nullopt;
    const Model& model = loaded.model();
    ComparedRun run;
    runBeside(loaded, [&](const Results& results, const Evaluation& evaluation) {
        run = comparedRun(model.path, results, evaluation);
    });
    for (const Scenario& one : model.scenarios) {
        if (one.name != scenario) continue;
        run.name = scenario;
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
    std::vector<std::string> names{""};
    for (const Scenario& scenario : loaded.model().scenarios) {
        names.push_back(scenario.name);
    }
    std::vector<ComparedRun> runs;
    for (const std::string& name : names) {
        auto run = runOf(path, options.read, name);
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

}  // namespace

int compareCommand(const CompareOptions& options) {
    if (!isGood(options)) return kBadModel;
    if (!options.output.empty()) {
        constexpr std::string_view kBegins = "figure,unit,";
        if (const std::string why = whyNotOver(options.output, options.runs, {&kBegins, 1}); !why.empty()) {
            std::cerr << fmt::format("kesto compare: error: {}\n", printable(why));
            return kBadModel;
        }
    }
    auto runs = options.scenarios ? runScenarios(options) : readRuns(options);
    if (!runs) return kBadModel;
    const Comparison comparison = compare(std::move(*runs), options.all);
    for (const std::string& warning : comparison.warnings) {
        std::cerr << "kesto compare: warning: " << printable(warning) << '\n';
    }
    if (!options.output.empty()) replaceFile(options.output, toCsv(comparison));
    std::cout << (options.json ? toJson(comparison) : toText(comparison));
    return kGood;
}

}  // namespace kesto
