#include "results_folder.h"

#include <fmt/format.h>

#include <filesystem>

#include "files.h"
#include "results_csv.h"
#include "results_netcdf.h"
#include "summary.h"
#include "summary_json.h"

namespace kesto {

namespace {

constexpr const char* kStoppedFile = "STOPPED.txt";

// Files of an earlier run must not be taken for those of this one.
void removeResults(const std::string& folder) {
    if (!std::filesystem::exists(joined(folder, "summary.json"))) return;
    for (const char* name : {"summary.json", "flows.csv", "qualities.csv", "states.csv", "potentials.csv",
                             "account.csv", "figures.csv", "balance.csv", "results.nc", kStoppedFile}) {
        std::filesystem::remove(joined(folder, name));
    }
}

}  // namespace

std::vector<std::string> writeResults(const Results& results, const Evaluation& evaluation, const ReadOptions& read,
                                      const std::string& format, const std::string& folder) {
    removeResults(folder);
    std::vector<std::string> files;
    if (format == "netcdf") {
        files.push_back(writeNetcdf(results, evaluation, read, folder));
    } else {
        files = writeCsv(results, folder);
        files.push_back(writeAccountCsv(evaluation.account, folder));
        files.push_back(writeFiguresCsv(evaluation.figures, folder));
        if (evaluation.showsBalance) files.push_back(writeBalanceCsv(evaluation.balance, folder));
    }
    const auto add = [&](const char* name, const std::string& text) {
        files.push_back(joined(folder, name));
        writeFile(files.back(), text);
    };
    if (results.run.outcome != Outcome::finished) {
        add(kStoppedFile, fmt::format("{}: {}\nThe results hold the {} of {} steps that ran.\n", results.model->path,
                                      failureOf(results), results.steps, results.model->simulation.days()));
    }
    add("summary.json", summaryJson(results, evaluation));
    return files;
}

}  // namespace kesto
