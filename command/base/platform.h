// What the command asks of the operating system. The header names no system; each has one source, platform_posix.cpp
// and whatever stands beside it. What the engine's process needs stands in engine/engine_process.h.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <system_error>

namespace kesto {

// Columns of the terminal that shows what is written there; 0 when there is none, or one that cannot erase a line.
int terminalColumns(std::FILE* stream);

// std::fopen for a name in UTF-8; null when it fails.
std::FILE* openFile(const std::string& path, const char* mode);

// Why the C library has just failed; what a person reads of it: "No such file or directory".
std::error_code lastError();
std::string reasonOf(const std::error_code& error);

// Gives a file another name in one step; what had that name is gone.
std::error_code moveFile(const std::string& from, const std::string& to);

// No error when another file can take the place of this one, which exists.
std::error_code replaceAccess(const std::string& path);

// No error when files can be made in the folder.
std::error_code writeAccess(const std::string& folder);

// What a file holds, or which names a folder has, outlives a power failure from here on.
std::error_code syncToDisk(const std::string& path);

// A file that one process holds at a time. The system lets go of it when the process ends, however it ends.
class FileLock {
  public:
    // Makes the file unless it is there. Throws std::system_error when it cannot be made, or cannot be locked.
    explicit FileLock(const std::string& path);
    ~FileLock();  // removes the file, if this process holds it
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    bool isHeld() const;  // by this process, or the one that has started it

    // Called in a child of the process that holds it: until both have ended, nobody else can have it.
    void hold();

    long holder() const { return holder_; }  // id of the process that holds it; 0: unknown, as on another machine

  private:
    std::string path_;
    int file_ = -1;
    long holder_ = 0;
};

// Bytes: the larger of this process's peak and that of its largest child.
double peakMemory();

// While it lives, a request to stop (Ctrl-C, a polite kill, a terminal that closes) does not end this process: it is
// only noted, unless the process was started to ignore it. A second one ends the process at once.
class InterruptGuard {
  public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    bool wasInterrupted() const;

    // Ends this process as the request that was noted would have ended it; without one it does nothing. A shell then
    // knows that its loop is to stop, too.
    void passOn();

  private:
    struct Before;
    std::unique_ptr<Before> before_;
};

}  // namespace kesto
