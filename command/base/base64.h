// Bytes as text.
#pragma once

#include <span>
#include <string>

namespace kesto {

std::string base64(std::span<const unsigned char> bytes);

}  // namespace kesto
