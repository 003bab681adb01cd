// The checksum by which a result knows its model.
#pragma once

#include <string>

namespace kesto {

// In hexadecimal digits, as sha256sum prints it; empty when the file cannot be read.
std::string sha256OfFile(const std::string& path);

}  // namespace kesto
