// The engine's own process. The header names no system; each has its own sources: engine_process_posix.cpp is the only
// file that forks.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "shared_memory.h"

namespace kesto {

// What a child process does, and its answer. When it dies within `run`, of a fault or since it is told to stop, it
// calls `keep` first, which may touch only memory that exists already.
struct ChildWork {
    std::function<std::string()> run;
    std::function<void()> keep = {};  // empty: nothing
    bool leavesStopping = false;      // a request to stop is its parent's business alone
};

// Called within `run`: there is nothing to keep from here on. A fault ends the child as it ends any process, and
// requests to stop are left to its parent, with which it ends.
void keepNothingMore();

// A process that works on a copy of this one's memory, shared memory apart, and never outlives it.
class ChildProcess {
  public:
    explicit ChildProcess(const ChildWork& work);  // throws std::runtime_error when no process can be started
    ~ChildProcess();                               // ends it, if it still runs
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    static constexpr int kForever = -1;

    // Waits for so long at most; false once the child has ended.
    bool wait(int milliseconds);

    // Waits until one of them has written or ended, or until the bell rings, for so long at most.
    static void waitForAny(const std::vector<const ChildProcess*>& children, Bell& bell, int milliseconds);

    // Tells it to stop; what it has is kept. Telling it again changes nothing.
    void stop();

    const std::optional<std::string>& answer() const { return answer_; }  // once it has ended; none if it died before
    const std::string& errors() const { return errors_; }                 // what it has written on stderr
    const std::string& fault() const { return fault_; }  // "ended by signal 9 (Killed)"; empty: it ended by itself
    std::string lastWords() const;                       // what it has written on stderr, else its fault

  private:
    void collect();

    struct System;
    std::unique_ptr<System> system_;
    std::optional<std::string> answer_;
    std::string received_, errors_, fault_;
};

// What main() does: runs the program, with its arguments in UTF-8. Where the system cannot copy a process, a child
// begins here, too.
int startProgram(int argc, char** argv, int (*program)(int argc, char** argv));

// The engine's calendar is that of this process; it must be UTC.
void useUtc();

}  // namespace kesto
