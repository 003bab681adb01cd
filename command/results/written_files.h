// The files that a run has written into its folder, as summary.json lists them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kesto {

struct WrittenFile {
    std::string name;
    std::uintmax_t bytes;
    std::string checksum;  // XXH128
};

inline constexpr std::size_t kLargestSummary = 1'000'000'000;  // bytes
inline constexpr std::string_view kSummaryFile = "summary.json";
inline constexpr std::string_view kOverviewFile = "overview.json";
inline constexpr std::string_view kStoppedFile = "STOPPED.txt";

// What the summary tells of the files beside it: rows with `file`, `bytes` and `xxh128`.
nlohmann::ordered_json fileRows(const std::vector<WrittenFile>& files);

// The rows again; names that lead out of the folder are left out. Throws nlohmann::json::exception when they are none.
std::vector<WrittenFile> filesIn(const nlohmann::ordered_json& rows);

// Those of a summary. Nothing when the text is no summary of a run.
std::optional<std::vector<WrittenFile>> filesOf(const std::string& summary);

// The file of this name; null when the list has none.
const WrittenFile* find(const std::vector<WrittenFile>& files, std::string_view name);

// True when a regular file of this name and length is in the folder.
bool isThere(const std::string& folder, const WrittenFile& file);

// True when it holds what was written, too.
bool isUnchanged(const std::string& folder, const WrittenFile& file);

// What stands in the folder under this name now. Throws std::runtime_error when it cannot be read.
WrittenFile fileAt(const std::string& folder, const std::string& name);

// A summary, and files that are all there, as they were written and of the one run that it tells of.
struct StoredResults {
    std::string summary;
    std::vector<WrittenFile> files;
};

// Throws std::runtime_error when the folder holds no results of a run, or a mixture of two.
StoredResults storedResults(const std::string& folder);

// To be called once the files have been read. Throws std::runtime_error when a run has put others in their place
// meanwhile.
void expectUnchanged(const std::string& folder, const StoredResults& stored);

}  // namespace kesto
