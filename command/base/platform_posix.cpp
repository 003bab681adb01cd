#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "platform.h"

namespace kesto {

namespace {

// True when the name still leads to the file that was opened, which whoever held it before may have removed.
bool isStillAt(const std::string& path, int file) {
    struct stat opened {
    }, named{};
    return fstat(file, &opened) == 0 && lstat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

// Of so many bytes from the first on; 0: all that follow.
bool setLock(int file, short type, off_t first, off_t count) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_start = first;
    lock.l_len = count;
    return fcntl(file, F_SETLK, &lock) == 0;
}

// The process that held the file has died, and its child is about to: a moment later nobody holds it.
bool isLeftToChild(int file) {
    struct flock first {};
    first.l_type = F_WRLCK;
    first.l_len = 1;
    return fcntl(file, F_GETLK, &first) == 0 && first.l_type == F_UNLCK;
}

constexpr std::array<int, 3> kRequests{SIGINT, SIGTERM, SIGHUP};
constexpr long kSameRequest = 50'000'000;  // ns

volatile std::sig_atomic_t interrupted = 0;  // the first request; 0: none
timespec interruptedAt{};

// One request can arrive twice: `timeout` signals its child and then its group, which the child is in, and a terminal
// that closes is told by the shell and by the kernel.
bool isSameRequest(int signal) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const bool isSoon =
        now.tv_sec - interruptedAt.tv_sec < 2 &&
        (now.tv_sec - interruptedAt.tv_sec) * 1'000'000'000 + now.tv_nsec - interruptedAt.tv_nsec < kSameRequest;
    return isSoon || (signal == SIGHUP && interrupted == SIGHUP);
}

extern "C" void noteInterrupt(int signal) {
    const int error = errno;
    if (interrupted == 0) {
        interrupted = signal;
        clock_gettime(CLOCK_MONOTONIC, &interruptedAt);
    } else if (!isSameRequest(signal)) {
        std::signal(signal, SIG_DFL);
        raise(signal);  // once this handler has returned
    }
    errno = error;
}

}  // namespace

int terminalColumns(std::FILE* stream) {
    constexpr int kUsual = 80;  // of terminals that do not tell
    const char* const kind = std::getenv("TERM");
    if (isatty(fileno(stream)) != 1 || !kind || !*kind || std::strcmp(kind, "dumb") == 0) return 0;
    winsize size{};
    return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

std::FILE* openFile(const std::string& path, const char* mode) {
    return std::fopen(path.c_str(), mode);
}

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::string reasonOf(const std::error_code& error) {
    return error.message();
}

std::error_code moveFile(const std::string& from, const std::string& to) {
    std::error_code error;
    std::filesystem::rename(from, to, error);
    return error;
}

// It is the folder that must be written to; what has the file open keeps it.
std::error_code replaceAccess(const std::string&) {
    return {};
}

std::error_code writeAccess(const std::string& folder) {
    if (access(folder.c_str(), W_OK | X_OK) == 0) return {};
    return lastError();
}

std::error_code syncToDisk(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return lastError();
    // File systems that cannot do it for a folder have no need to.
    const std::error_code error = fsync(file) == 0 || errno == EINVAL ? std::error_code() : lastError();
    close(file);
    return error;
}

// A lock of the whole process: children do not inherit it, and the system can say who holds it. Whoever wants the file
// locks all of it; its holder then needs the first byte alone, and leaves the next to a child.
FileLock::FileLock(const std::string& path) : path_(path) {
    constexpr int kMostWaits = 500;
    constexpr std::chrono::milliseconds kWait{10};
    int waits = 0;
    for (;;) {
        file_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (file_ < 0) throw std::system_error(lastError(), path);
        struct flock lock {};
        lock.l_type = F_WRLCK;
        const bool isTaken = fcntl(file_, F_SETLK, &lock) == 0;
        const std::error_code error = lastError();
        if (isTaken && isStillAt(path, file_)) {
            setLock(file_, F_UNLCK, 1, 0);
            return;
        }
        const bool isDying = !isTaken && isLeftToChild(file_);
        if (!isTaken && (fcntl(file_, F_GETLK, &lock) != 0 || lock.l_type != F_UNLCK)) holder_ = lock.l_pid;
        close(file_);
        file_ = -1;
        if (isTaken) continue;
        if (isDying && ++waits < kMostWaits) {
            std::this_thread::sleep_for(kWait);
            continue;
        }
        if (error != std::errc::permission_denied && error != std::errc::resource_unavailable_try_again) {
            throw std::system_error(error, path);
        }
        if (lock.l_type != F_UNLCK) return;
    }
}

void FileLock::hold() {
    if (!setLock(file_, F_WRLCK, 1, 1)) throw std::system_error(lastError(), path_);
}

FileLock::~FileLock() {
    if (file_ < 0) return;
    unlink(path_.c_str());  // while nobody else can hold it
    close(file_);
}

bool FileLock::isHeld() const {
    return file_ >= 0;
}

double peakMemory() {
    double most = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        most = std::max(most, 1024.0 * static_cast<double>(usage.ru_maxrss));
    }
    return most;
}

struct InterruptGuard::Before {
    std::array<struct sigaction, kRequests.size()> requests;
    struct sigaction tooLarge;
};

// A file that meets a limit of its size is an error, as on a full disk.
InterruptGuard::InterruptGuard() : before_(std::make_unique<Before>()) {
    interrupted = 0;
    struct sigaction action {};
    action.sa_handler = noteInterrupt;
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < kRequests.size(); ++i) {
        struct sigaction& before = before_->requests[i];
        sigaction(kRequests[i], nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(kRequests[i], &action, nullptr);
    }
    action.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &action, &before_->tooLarge);
}

InterruptGuard::~InterruptGuard() {
    for (std::size_t i = 0; i < kRequests.size(); ++i) {
        sigaction(kRequests[i], &before_->requests[i], nullptr);
    }
    sigaction(SIGXFSZ, &before_->tooLarge, nullptr);
}

bool InterruptGuard::wasInterrupted() const {
    return interrupted != 0;
}

void InterruptGuard::passOn() {
    const int signal = interrupted;
    if (signal == 0) return;
    std::signal(signal, SIG_DFL);
    raise(signal);
}

}  // namespace kesto
