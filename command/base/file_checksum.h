// The checksum by which results know their files: quick, since it is made of all that a run writes.
#pragma once

#include <string>

namespace kesto {

// XXH128 in hexadecimal digits, as `xxhsum -H2` prints it; empty when the file cannot be read.
std::string xxh128OfFile(const std::string& path);

}  // namespace kesto
