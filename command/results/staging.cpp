#include "staging.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "files.h"
#include "folder_lock.h"
#include "platform.h"

namespace kesto {

namespace {

namespace fs = std::filesystem;

constexpr const char* kHiddenFolder = ".kesto-run";
constexpr const char* kMarkFile = "mark";
constexpr std::string_view kMark =
    "A run was stopped while it put its files into this folder: some are its own, some those of the run before.\n"
    "Run the model again.\n";

[[noreturn]] void fail(const std::string& path, const std::error_code& error) {
    throw std::runtime_error(fmt::format("cannot write {}: {}", path, reasonOf(error)));
}

}  // namespace

Staging::Staging(const std::string& folder)
    : folder_(folder), path_(joined(folder, kHiddenFolder)), lock_(lockFolder(folder, kHiddenFolder)) {}

Staging::~Staging() {
    try {
        if (!isMarked(folder_)) clear();
    } catch (const std::exception&) {
        // The next run clears it.
    }
    lock_.reset();
    std::error_code ignored;
    fs::remove(pathOf(path_), ignored);  // only when it is empty
}

bool Staging::isMarked(const std::string& folder) {
    const std::string path = joined(folder, kStoppedFile);
    return isThere(folder, {std::string(kStoppedFile), kMark.size(), {}}) && readFile(path, kMark.size()) == kMark;
}

std::vector<WrittenFile> Staging::unfinished() const {
    if (!isMarked(folder_)) return {};
    for (const std::string& folder : {path_, folder_}) {
        const std::string summary = joined(folder, kSummaryFile);
        if (!fs::is_regular_file(fs::symlink_status(pathOf(summary)))) continue;
        if (auto files = filesOf(readFile(summary, kLargestSummary))) return *files;
    }
    return {};
}

void Staging::complete(const std::vector<WrittenFile>& files, const std::string& summary) {
    writeFile(joined(path_, kSummaryFile), summary);
    writeFile(joined(path_, kMarkFile), kMark);
    for (const WrittenFile& file : files) {
        sync(joined(path_, file.name));
    }
    sync(joined(path_, kSummaryFile));
    sync(joined(path_, kMarkFile));
    sync(path_);
}

void Staging::moveIntoPlace(const std::vector<WrittenFile>& files, const std::vector<WrittenFile>& old) {
    if (move(kMarkFile, std::string(kStoppedFile))) sync(folder_);
    for (const WrittenFile& file : old) {
        if (file.name != kStoppedFile && !find(files, file.name)) fs::remove(pathOf(joined(folder_, file.name)));
    }
    for (const WrittenFile& file : files) {
        if (file.name != kStoppedFile) move(file.name, file.name);
    }
    sync(folder_);
    if (move(std::string(kSummaryFile), std::string(kSummaryFile))) sync(folder_);
    if (!find(files, kStoppedFile)) {
        fs::remove(pathOf(joined(folder_, kStoppedFile)));
    } else {
        move(std::string(kStoppedFile), std::string(kStoppedFile));
    }
    sync(folder_);
}

void Staging::clear() {
    for (const fs::directory_entry& entry : fs::directory_iterator(pathOf(path_))) {
        if (entry.path().filename() != kLockFile && !fs::is_directory(entry.symlink_status())) fs::remove(entry.path());
    }
}

bool Staging::move(const std::string& name, const std::string& to) const {
    const std::error_code error = moveFile(joined(path_, name), joined(folder_, to));
    if (error == std::errc::no_such_file_or_directory) return false;
    if (error) fail(joined(folder_, to), error);
    return true;
}

void Staging::sync(const std::string& path) const {
    if (const std::error_code error = syncToDisk(path)) fail(path, error);
}

}  // namespace kesto
