#include <fmt/format.h>

#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "display.h"
#include "draw.h"
#include "files.h"
#include "load.h"
#include "report.h"
#include "run_apart.h"
#include "sha256.h"

namespace kesto {

namespace {

// Beyond this, laying a network out takes minutes, and nobody can read it.
constexpr std::size_t kDrawable = 300;

std::string summaryPath(const ReportOptions& options) {
    return joined(options.results, "summary.json");
}

std::string readSummary(const ReportOptions& options) {
    try {
        return readFile(summaryPath(options), kLargestModel);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(
            fmt::format("{}; expected a folder that \"kesto run MODEL -o FOLDER\" wrote", error.what()));
    }
}

std::string missing(const std::string& why) {
    std::cerr << "kesto report: warning: the network is not drawn: " << printable(why) << '\n';
    return "<p class=\"note\">The network is not drawn here.</p>";
}

// A page without its drawing is still worth having.
std::string drawingOf(const std::string& path) {
    if (!std::filesystem::exists(path)) return missing(fmt::format("{} is not there; say --model MODEL", path));
    const LoadedModel loaded(path);
    if (!loaded.isFit()) return missing(fmt::format("\"kesto check {}\" finds errors", path));
    if (const std::size_t count = loaded.model().components.size(); count > kDrawable) {
        return missing(fmt::format("it has {} components, more than the {} that a page can show; see \"kesto draw\"",
                                   count, kDrawable));
    }
    try {
        const std::string svg = renderGraph(networkDot(loaded.model()), "svg");
        const std::size_t begin = svg.find("<svg");  // what stands before it has no place within HTML
        return begin == std::string::npos ? missing("\"dot\" gave no picture") : svg.substr(begin);
    } catch (const std::runtime_error& error) {
        return missing(error.what());
    }
}

// Which of the files that were run hold something else now. What an earlier version did not note is not compared.
std::vector<std::string> changesSince(const nlohmann::json& run, const std::string& model) {
    std::vector<std::string> changes;
    const auto compare = [&](const std::string& path, const std::string& sha256) {
        const std::string now = sha256OfFile(path);
        if (sha256.empty() || now == sha256) return;
        changes.push_back(path + (now.empty() ? " is no longer there" : " has changed since the run"));
        std::cerr << "kesto report: warning: " << printable(changes.back()) << '\n';
    };
    if (!std::filesystem::exists(model)) return {};  // reported with the drawing
    compare(model, run.value("model_sha256", ""));
    for (const nlohmann::json& input : run.value("inputs", nlohmann::json::array())) {
        const std::filesystem::path file = input.value("file", "");
        compare((std::filesystem::path(model).parent_path() / file).string(), input.value("sha256", ""));
    }
    return changes;
}

void makePage(const ReportOptions& options) {
    const std::string summary = readSummary(options);
    try {
        const auto run = nlohmann::json::parse(summary);
        const std::string model =
            options.model.empty() ? run.value("model_file", run.value("model", "")) : options.model;
        const std::vector<std::string> changes = changesSince(run, model);
        writeFile(options.output, reportPage(options.results, summary, drawingOf(model), changes));
    } catch (const nlohmann::json::exception& error) {
        throw std::runtime_error(
            fmt::format("cannot read {}: it is not what \"kesto run\" writes: {}", summaryPath(options), error.what()));
    }
}

}  // namespace

int reportCommand(const ReportOptions& options) {
    // HDF5 crashes on some files that are broken.
    const std::string netcdf = joined(options.results, "results.nc");
    const std::string& read = std::filesystem::exists(netcdf) ? netcdf : options.results;
    runApart(fmt::format("cannot read {}, which may be broken", read), [&] { makePage(options); });
    if (!hasCharts()) {
        std::cerr << "kesto report: warning: the page has tables but no charts: this command was built without uPlot, "
                     "which npm fetches when kesto is built (CMake says why at its start)\n";
    }
    return kGood;
}

}  // namespace kesto
