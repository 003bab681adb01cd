#include "written_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "file_checksum.h"
#include "files.h"

namespace kesto {

namespace {

namespace fs = std::filesystem;

// A summary that somebody else wrote must not have the command remove files elsewhere.
bool isPlainName(const std::string& name) {
    return !name.empty() && name.front() != '.' && name != kSummaryFile &&
           name.find_first_of("/\\:") == std::string::npos;
}

std::string readSummary(const std::string& folder) {
    try {
        return readFile(joined(folder, kSummaryFile), kLargestSummary);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(
            fmt::format("{}; expected a folder that \"kesto run MODEL -o FOLDER\" wrote", error.what()));
    }
}

[[noreturn]] void refuse(const std::string& folder, const std::string& why) {
    throw std::runtime_error(
        fmt::format("cannot read {}: {}; the results there do not belong together: run the model again", folder, why));
}

// A run that is stopped while it moves its files leaves a mark that the summary does not know.
void expectNoOtherMark(const std::string& folder, const std::vector<WrittenFile>& files) {
    const WrittenFile* listed = find(files, kStoppedFile);
    const bool stands = fs::symlink_status(pathOf(joined(folder, kStoppedFile))).type() != fs::file_type::not_found;
    if (!stands || (listed && isUnchanged(folder, *listed))) return;
    refuse(folder, fmt::format("{} says that a run was stopped while it wrote", kStoppedFile));
}

}  // namespace

nlohmann::ordered_json fileRows(const std::vector<WrittenFile>& files) {
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    for (const WrittenFile& file : files) {
        rows.push_back({{"file", file.name}, {"bytes", file.bytes}, {"xxh128", file.checksum}});
    }
    return rows;
}

std::vector<WrittenFile> filesIn(const nlohmann::ordered_json& rows) {
    std::vector<WrittenFile> files;
    for (const nlohmann::ordered_json& row : rows.get<nlohmann::ordered_json::array_t>()) {
        WrittenFile file{row.at("file"), row.at("bytes"), row.at("xxh128")};
        if (isPlainName(file.name)) files.push_back(std::move(file));
    }
    return files;
}

std::optional<std::vector<WrittenFile>> filesOf(const std::string& summary) {
    try {
        // The rest can be large.
        using Json = nlohmann::ordered_json;
        const auto wanted = [](int depth, Json::parse_event_t event, const Json& key) {
            return depth != 1 || event != Json::parse_event_t::key || key == "outcome" || key == "files";
        };
        const Json json = Json::parse(summary, wanted);
        if (!json.at("outcome").is_string()) return std::nullopt;
        return filesIn(json.at("files"));
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

const WrittenFile* find(const std::vector<WrittenFile>& files, std::string_view name) {
    const auto found = std::find_if(files.begin(), files.end(), [&](const WrittenFile& f) { return f.name == name; });
    return found == files.end() ? nullptr : &*found;
}

bool isThere(const std::string& folder, const WrittenFile& file) {
    std::error_code error;
    const fs::path path = pathOf(joined(folder, file.name));
    return fs::symlink_status(path, error).type() == fs::file_type::regular && fs::file_size(path, error) == file.bytes;
}

bool isUnchanged(const std::string& folder, const WrittenFile& file) {
    return isThere(folder, file) && xxh128OfFile(joined(folder, file.name)) == file.checksum;
}

WrittenFile fileAt(const std::string& folder, const std::string& name) {
    const std::string path = joined(folder, name);
    return {name, fs::file_size(pathOf(path)), xxh128OfFile(path)};
}

StoredResults storedResults(const std::string& folder) {
    const std::string summary = readSummary(folder);
    const auto files = filesOf(summary);
    if (!files) {
        throw std::runtime_error(fmt::format("cannot read {}: it does not list the files of a run; run the model again",
                                             joined(folder, kSummaryFile)));
    }
    expectNoOtherMark(folder, *files);
    for (const WrittenFile& file : *files) {
        if (isUnchanged(folder, file)) continue;
        const bool isGone = fs::symlink_status(pathOf(joined(folder, file.name))).type() == fs::file_type::not_found;
        refuse(folder,
               file.name + (isGone ? " is no longer there" : " is not the file that the run of summary.json wrote"));
    }
    return {summary, *files};
}

// The mark stands before the first file is moved into the folder, and the summary is moved last.
void expectUnchanged(const std::string& folder, const StoredResults& stored) {
    expectNoOtherMark(folder, stored.files);
    if (readSummary(folder) != stored.summary) {
        throw std::runtime_error(fmt::format("cannot read {}: another run wrote into it meanwhile; try again", folder));
    }
}

}  // namespace kesto
