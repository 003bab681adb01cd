// The one file that a command writes after -o.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kesto {

// Why the path must not be written to; empty when it may. Never over a file of `reads`, and over a file that is there
// only when it begins like one that the command writes, whatever it is called: not over a model, a series or results.
std::string whyNotOver(const std::string& path, const std::vector<std::string>& reads,
                       std::span<const std::string_view> beginnings);

}  // namespace kesto
