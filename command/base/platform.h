// What the command asks of the operating system. The header names no system; each has one source, platform_posix.cpp
// and whatever stands beside it. What the engine's process needs stands in engine/engine_process.h.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace kesto {

// Columns of the terminal that shows what is written there; 0 when there is none, or one that cannot erase a line.
int terminalColumns(std::FILE* stream);

// No error when files can be made in the folder.
std::error_code writeAccess(const std::string& folder);

// Bytes: the larger of this process's peak and that of its largest child.
double peakMemory();

// A constant table of this name out of a library: of the first of these files that can be loaded, by their places
// relative to the folder of this program, and nowhere else. Throws std::runtime_error when there is none.
const void* loadTable(const std::vector<std::string>& files, const std::string& name);

struct ProgramRun {
    bool isFound = false;  // by its name, on the system's path; if not, nothing was started
    bool succeeded = false;
    std::string output, errors;  // all that it wrote
};

// Runs a program to its end: its name, then its arguments. Throws std::runtime_error when it cannot be started.
ProgramRun runProgram(const std::vector<std::string>& arguments, std::string_view input);

// While it lives, a request to stop (Ctrl-C, a polite kill) does not end this process: it is only noted.
class InterruptGuard {
  public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    bool wasInterrupted() const;

  private:
    struct Before;
    std::unique_ptr<Before> before_;
};

}  // namespace kesto
