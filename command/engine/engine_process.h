// The engine's own process, and the memory that it shares with the one that started it. The header names no system;
// each has one source: engine_process_posix.cpp is the only file that forks.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kesto {

// Memory that a child process writes and its parent reads.
class SharedMemory {
  public:
    explicit SharedMemory(std::size_t bytes);  // throws std::bad_alloc
    ~SharedMemory();
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    // Zero-filled, aligned to 16 bytes. The sum of what is taken must not exceed what was asked for.
    template <class T>
    T* take(std::size_t count) {
        return static_cast<T*>(takeBytes(count * sizeof(T)));
    }
    static constexpr std::size_t rounded(std::size_t bytes) { return (bytes + 15) / 16 * 16; }

  private:
    void* takeBytes(std::size_t bytes);

    std::byte* begin_;
    std::size_t size_;
    std::size_t used_ = 0;
};

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

// Wakes processes that share it: each ring lets one of those that wait go on, now or later.
class Bell {
  public:
    Bell();  // throws std::runtime_error
    ~Bell();
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;

    void ring();
    void wait();

  private:
    friend class ChildProcess;
    int handle_;
};

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

// Gives memory of this process back to the system: nothing reads it any more, though it is not freed. May be called
// from `keep`.
void giveBack(void* memory, std::size_t bytes);

// What this process frees from here on stays with it, to be used again.
void keepFreeMemory();

// The engine's calendar is that of this process; it must be UTC.
void useUtc();

}  // namespace kesto
