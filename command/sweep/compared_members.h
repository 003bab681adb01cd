// Members of a sweep as runs to compare.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "comparison.h"

namespace kesto {

// Numbers of members, as in "1,5,9-12". Throws std::runtime_error that says what is wrong.
std::vector<std::size_t> parseMembers(const std::string& text);

// True when a sweep has left its table in the folder.
bool isSweep(const std::string& folder);

struct ComparedMembers {
    std::vector<ComparedRun> runs;
    std::size_t all = 0;  // members of the sweep
};

// These members, or so many of the first. Throws std::runtime_error that names the file and what is wrong with it.
ComparedMembers readComparedMembers(const std::string& folder, const std::vector<std::size_t>& members,
                                    std::size_t most);

// The members by what was varied: all, or so many of them, evenly spaced. Throws likewise.
ComparedSweep readComparedSweep(const std::string& folder, std::size_t most);

}  // namespace kesto
