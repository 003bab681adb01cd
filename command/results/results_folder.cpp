#include "results_folder.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "files.h"
#include "results_csv.h"
#include "results_netcdf.h"
#include "summary.h"
#include "summary_json.h"

namespace kesto {

namespace {

namespace fs = std::filesystem;

// What a run may write besides the summary; which of it, the results say.
std::vector<std::string> possibleNames(const ResultsFormat& format) {
    std::vector<std::string> names{std::string(kSummaryFile), std::string(kStoppedFile), std::string(kOverviewFile)};
    if (format.name == "netcdf") {
        names.emplace_back("results.nc");
        return names;
    }
    for (const char* name :
         {"flows.csv", "qualities.csv", "states.csv", "potentials.csv", "account.csv", "figures.csv"}) {
        names.emplace_back(name);
    }
    if (format.hasBalance) names.emplace_back("balance.csv");
    return names;
}

std::vector<std::string> namesOf(const std::vector<WrittenFile>& files) {
    std::vector<std::string> names{std::string(kSummaryFile), std::string(kStoppedFile)};
    for (const WrittenFile& file : files) {
        names.push_back(file.name);
    }
    return names;
}

}  // namespace

ResultsFolder::ResultsFolder(const std::string& path, const ResultsFormat& format, std::vector<std::string> inputs)
    : path_(path), format_(format), inputs_(std::move(inputs)) {
    makeFolder(path);
    staging_ = std::make_unique<Staging>(path);
    readSummary();
    finishMoves();
    staging_->clear();
    expectReplaceable(possibleNames(format_));
    expectReplaceable(namesOf(ownFiles()));
}

// What an earlier run has left.
void ResultsFolder::readSummary() {
    old_.clear();
    const std::string path = joined(path_, kSummaryFile);
    if (fs::symlink_status(pathOf(path)).type() != fs::file_type::regular) return;
    const std::string text = readFile(path, kLargestSummary);
    auto files = filesOf(text);
    if (!files) return;
    old_ = std::move(*files);
    old_.push_back({std::string(kSummaryFile), text.size(), {}});
}

std::vector<WrittenFile> ResultsFolder::write(const Results& results, const Evaluation& evaluation) {
    std::vector<WrittenFile> files;
    try {
        files = stage(results, evaluation);
        // An hour may have passed.
        expectReplaceable(namesOf(files));
    } catch (const std::exception& error) {
        throw std::runtime_error(fmt::format("{}; {} holds what it held before", error.what(), path_));
    }
    try {
        staging_->moveIntoPlace(files, ownFiles());
    } catch (const std::exception& error) {
        if (!Staging::isMarked(path_)) throw;
        throw std::runtime_error(fmt::format(
            "{}; some files in {} are old and some new, until another run puts it right", error.what(), path_));
    }
    return files;
}

std::vector<WrittenFile> ResultsFolder::stage(const Results& results, const Evaluation& evaluation) {
    const std::string& folder = staging_->path();
    std::vector<std::string> paths;
    if (format_.name == "netcdf") {
        paths.push_back(writeNetcdf(results, evaluation, format_.compression, folder));
    } else {
        paths = writeCsv(results, folder);
        paths.push_back(writeAccountCsv(evaluation.account, folder));
        paths.push_back(writeFiguresCsv(evaluation.figures, folder));
        if (format_.hasBalance) paths.push_back(writeBalanceCsv(evaluation.balance, folder));
    }
    if (evaluation.overview) paths.push_back(writeOverview(*evaluation.overview, folder));
    if (results.run.outcome != Outcome::finished) {
        paths.push_back(joined(folder, kStoppedFile));
        writeFile(paths.back(),
                  fmt::format("{}: {}\nThe results hold the {} of {} steps that ran.\n", results.model->path,
                              failureOf(results), results.steps, results.model->simulation.days()));
    }
    std::vector<WrittenFile> files;
    for (const std::string& path : paths) {
        files.push_back(fileAt(folder, nameOf(pathOf(path).filename())));
    }
    staging_->complete(files, summaryJson(results, evaluation, files));
    return files;
}

// What a run had still to move when it was killed is on the disk.
void ResultsFolder::finishMoves() {
    const std::vector<WrittenFile> files = staging_->unfinished();
    if (files.empty()) return;
    old_.insert(old_.end(), files.begin(), files.end());
    expectReplaceable(namesOf(files));
    staging_->moveIntoPlace(files, ownFiles());
    readSummary();
}

void ResultsFolder::expectReplaceable(const std::vector<std::string>& names) const {
    kesto::expectReplaceable(
        path_, names, inputs_, [this](const std::string& name) { return isOurs(name); }, "run");
}

// By its name and length in the summary; of a run that was killed among its moves in either of two.
bool ResultsFolder::isOurs(const std::string& name) const {
    const auto isIt = [&](const WrittenFile& file) { return file.name == name && isThere(path_, file); };
    return std::any_of(old_.begin(), old_.end(), isIt) || (name == kStoppedFile && Staging::isMarked(path_));
}

// Files of an earlier run; what somebody has changed since is theirs.
std::vector<WrittenFile> ResultsFolder::ownFiles() const {
    std::vector<WrittenFile> files = old_;
    std::erase_if(files, [&](const WrittenFile& file) { return file.name == kSummaryFile || !isThere(path_, file); });
    return files;
}

}  // namespace kesto
