#include "output_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "files.h"

namespace kesto {

namespace {

namespace fs = std::filesystem;

// Without regard to case, as the type of a page is written.
bool beginsWith(const std::string& path, std::string_view beginning) {
    std::string found(beginning.size(), '\0');
    std::ifstream file(pathOf(path), std::ios::binary);
    file.read(found.data(), static_cast<std::streamsize>(found.size()));
    const auto isSame = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    };
    return file && std::equal(found.begin(), found.end(), beginning.begin(), isSame);
}

}  // namespace

std::string whyNotOver(const std::string& path, const std::vector<std::string>& reads,
                       std::span<const std::string_view> beginnings) {
    std::error_code error;
    const fs::file_type named = fs::symlink_status(pathOf(path), error).type(),
                        type = fs::status(pathOf(path), error).type();
    if (named == fs::file_type::symlink && (type == fs::file_type::regular || type == fs::file_type::not_found)) {
        return fmt::format("{} is a symbolic link, which is not followed; give the name of a file", path);
    }
    if (type != fs::file_type::regular) return {};
    const auto isRead = [&](const std::string& read) {
        return fs::equivalent(pathOf(path), pathOf(read), error) && !error;
    };
    if (std::any_of(reads.begin(), reads.end(), isRead)) {
        return fmt::format("{} is a file that this command reads; give another name", path);
    }
    if (fs::file_size(pathOf(path), error) == 0) return {};
    const auto isAlike = [&](std::string_view beginning) { return beginsWith(path, beginning); };
    if (std::any_of(beginnings.begin(), beginnings.end(), isAlike)) return {};
    return fmt::format("{} is there already and is nothing that this command has written; give another name", path);
}

std::chrono::seconds longestReading(const std::string& folder) {
    std::uintmax_t bytes = 0;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(pathOf(folder), error)) {
        const std::uintmax_t size = entry.file_size(error);
        if (!error) bytes += size;
    }
    return std::chrono::seconds(60 + bytes / 1'000'000);
}

}  // namespace kesto
