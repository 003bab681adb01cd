// The one file that a command writes after -o.
#pragma once

#include <chrono>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kesto {

// Why the path must not be written to; empty when it may. Never over a file of `reads`, and over a file that is there
// only when it begins like one that the command writes, whatever it is called: not over a model, a series or results.
std::string whyNotOver(const std::string& path, const std::vector<std::string>& reads,
                       std::span<const std::string_view> beginnings);

// How long reading results may take: a minute, and a second for each megabyte of the folder, many times what good ones
// do.
std::chrono::seconds longestReading(const std::string& folder);

}  // namespace kesto
