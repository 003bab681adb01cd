// Other programs, and libraries that are loaded when they are asked for. The header names no system.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kesto {

struct ProgramRun {
    bool isFound = false;  // by its name, on the system's path; if not, nothing was started
    bool succeeded = false;
    std::string output, errors;  // all that it wrote
};

// Runs a program to its end: its name, then its arguments. Throws std::runtime_error when it cannot be started.
ProgramRun runProgram(const std::vector<std::string>& arguments, std::string_view input);

// What a person does to have the programs of Graphviz here, for a message.
std::string_view installGraphviz();

// A constant table of this name out of a library: of the first of these files that can be loaded, by their places
// relative to the folder of this program, and nowhere else. Throws std::runtime_error when there is none.
const void* loadTable(const std::vector<std::string>& files, const std::string& name);

}  // namespace kesto
