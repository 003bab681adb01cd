#include <fmt/format.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "display.h"
#include "draw.h"
#include "files.h"
#include "json_reading.h"
#include "load.h"
#include "output_file.h"
#include "report.h"
#include "run_apart.h"
#include "sha256.h"
#include "written_files.h"

namespace kesto {

namespace {

constexpr std::string_view kPageBegins = "<!doctype html";

std::string missing(const std::string& why) {
    std::cerr << "kesto report: warning: the network is not drawn: " << printable(why) << '\n';
    return {};
}

// The model of a run, where it can still be had.
std::unique_ptr<LoadedModel> modelAt(const std::string& path) {
    return std::filesystem::exists(pathOf(path)) ? std::make_unique<LoadedModel>(path) : nullptr;
}

// A page without its drawing is still worth having.
std::string drawingOf(const std::string& path, const LoadedModel* loaded) {
    if (!loaded) return missing(fmt::format("{} is not there; say --model MODEL", path));
    if (!loaded->isFit()) return missing(fmt::format("\"kesto check {}\" finds errors", path));
    if (loaded->model().components.size() > kDrawable) return {};  // the page shows its groups
    try {
        const std::string svg = renderGraph(networkDot(loaded->model()), "svg");
        const std::size_t begin = svg.find("<svg");  // what stands before it has no place within HTML
        return begin == std::string::npos ? missing("\"dot\" gave no picture") : svg.substr(begin);
    } catch (const std::runtime_error& error) {
        return missing(error.what());
    }
}

// The summary has it relative to the model's folder, or absolute.
std::string inputPath(const std::string& model, const nlohmann::json& input) {
    return nameOf(pathOf(model).parent_path() / pathOf(input.value("file", "")));
}

// Which of the files that were run hold something else now. What an earlier version did not note is not
// compared.
std::vector<std::string> changesSince(const nlohmann::json& run, const std::string& model) {
    std::vector<std::string> changes;
    const auto compare = [&](const std::string& path, const std::string& sha256) {
        const std::string now = sha256OfFile(path);
        if (sha256.empty() || now == sha256) return;
        const std::string text = now.empty() ? " is no longer there" : " has changed since the run";
        changes.push_back(nameOf(pathOf(path).filename()) + text);
        std::cerr << "kesto report: warning: " << printable(path + text) << '\n';
    };
    if (!std::filesystem::exists(pathOf(model))) return {};  // reported with the drawing
    compare(model, run.value("model_sha256", ""));
    for (const nlohmann::json& input : run.value("inputs", nlohmann::json::array())) {
        compare(inputPath(model, input), input.value("sha256", ""));
    }
    return changes;
}

std::vector<std::string> filesRead(const std::string& folder, const StoredResults& stored, const nlohmann::json& run,
                                   const std::string& model) {
    std::vector<std::string> files{model, joined(folder, kSummaryFile)};
    for (const WrittenFile& file : stored.files) {
        files.push_back(joined(folder, file.name));
    }
    for (const nlohmann::json& input : run.value("inputs", nlohmann::json::array())) {
        files.push_back(inputPath(model, input));
    }
    return files;
}

// A summary that is JSON, and yet none of a run.
template <class Work>
auto readingSummary(const std::string& folder, const Work& work) {
    return readingJson(joined(folder, kSummaryFile), "kesto run", work);
}

int makePage(const ReportOptions& options, const StoredResults& stored) {
    // Of a large network the rest takes a hundred times as much memory.
    const nlohmann::json::parser_callback_t wanted = [](int depth, nlohmann::json::parse_event_t event,
                                                        const nlohmann::json& key) {
        return depth != 1 || event != nlohmann::json::parse_event_t::key || key == "model" || key == "model_file" ||
               key == "model_sha256" || key == "inputs";
    };
    const auto run = nlohmann::json::parse(stored.summary, wanted);
    const std::string model = options.model.empty() ? run.value("model_file", run.value("model", "")) : options.model;
    const std::string why =
        whyNotOver(options.output, filesRead(options.results, stored, run, model), {&kPageBegins, 1});
    if (!why.empty()) {
        std::cerr << "kesto report: error: " << printable(why) << '\n';
        return kBadModel;
    }
    const auto write = [&] {
        const std::vector<std::string> changes = changesSince(run, model);
        const std::unique_ptr<LoadedModel> loaded = modelAt(model);
        const std::string drawing = drawingOf(model, loaded.get());
        PageSource source{options.results, stored, nullptr, nullptr, !drawing.empty(), changes, options.series};
        if (loaded && loaded->isFit()) {
            source.model = &loaded->model();
            source.series = &loaded->series();
        }
        const std::string page = reportPage(source, drawing);
        expectUnchanged(options.results, stored);
        replaceFile(options.output, page);
    };
    // HDF5 crashes on some files that are broken, and goes round in others for ever.
    const std::string read = find(stored.files, "results.nc") ? joined(options.results, "results.nc") : options.results;
    runApart(fmt::format("cannot read {}, which may be broken", read), longestReading(options.results),
             [&] { readingSummary(options.results, write); });
    if (!hasCharts()) {
        std::cerr
            << "kesto report: warning: the page has tables but no charts: this command was built without "
               "the libraries that draw them, which npm fetches when kesto is built (CMake says why at its start)\n";
    }
    return kGood;
}

}  // namespace

int reportCommand(const ReportOptions& options) {
    const StoredResults stored = storedResults(options.results);
    return readingSummary(options.results, [&] { return makePage(options, stored); });
}

}  // namespace kesto
