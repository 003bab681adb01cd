// Whole files and folders, with errors that name the file and the system's reason.
#pragma once

#include <string>
#include <string_view>

namespace kesto {

// All throw std::runtime_error: "cannot read PATH: No such file or directory".
std::string readFile(const std::string& path);
void writeFile(const std::string& path, std::string_view text);

// Makes the folder, and those it lies in, unless it is there; files must be able to be made in it.
void makeFolder(const std::string& path);

std::string joined(const std::string& folder, std::string_view name);

}  // namespace kesto
