// Whole files and folders, with errors that name the file and the system's reason.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace kesto {

// Names are UTF-8 everywhere in the command, with `/` between folders; these make them the system's, and back.
std::filesystem::path pathOf(std::string_view name);
std::string nameOf(const std::filesystem::path& path);

// What is larger is refused before it is read: it would take all memory, and is hardly meant.
inline constexpr std::size_t kLargestModel = 256'000'000;    // bytes; a million components
inline constexpr std::size_t kLargestTable = 1'000'000'000;  // a century of days in 4,000 columns

// All throw std::runtime_error: "cannot read PATH: No such file or directory".
// Reads regular files alone, through symbolic links too: a device may never end, a pipe may never begin.
std::string readFile(const std::string& path, std::size_t largest);
// The file piece by piece; false when it is no regular file, or cannot be read.
bool readInPieces(const std::string& path, const std::function<void(std::string_view piece)>& take);
std::size_t expectRegular(const std::string& path);  // its size in bytes
void writeFile(const std::string& path, std::string_view text);

// Written aside and then moved to its place: the path has what it had before, or all of the text. What is no regular
// file, as a pipe, is written to as it is.
void replaceFile(const std::string& path, std::string_view text);

// Makes the folder, and those it lies in, unless it is there; files must be able to be made in it.
void makeFolder(const std::string& path);

std::string joined(const std::string& folder, std::string_view name);

}  // namespace kesto
