// The values of --vary: "0.5 m3,1 m3,2 m3", or "500:8000:16", from, to and how many.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kesto {

// Each as it would stand after --set. Throws std::runtime_error with what was expected.
std::vector<std::string> variedValues(std::string_view text);

}  // namespace kesto
