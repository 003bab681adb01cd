#include <fmt/format.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <stdexcept>

#include "engine_process.h"

namespace kesto {

namespace {

const ChildWork* childWork = nullptr;  // for the signal handlers, which get no argument

extern "C" void keepResultsAndDie(int signal) {
    // Whoever presses the keys again must not cut the copy short; a fault within it ends the process at once.
    for (const int request : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(request, SIG_IGN);
    }
    childWork->keep();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

// What a person sends to the terminal reaches this process, too, unless it was started to ignore it.
bool isIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

[[noreturn]] void runChild(const ChildWork& work, int errorPipe, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    dup2(errorPipe, STDERR_FILENO);
    childWork = &work;
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTERM}) {
        std::signal(signal, keepResultsAndDie);
    }
    for (const int signal : {SIGINT, SIGHUP}) {
        if (!isIgnored(signal)) std::signal(signal, keepResultsAndDie);
    }
    work.run();
    _exit(0);
}

}  // namespace

SharedMemory::SharedMemory(std::size_t bytes) : size_(std::max<std::size_t>(bytes, 16)) {
    void* address = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (address == MAP_FAILED) throw std::bad_alloc();
    begin_ = static_cast<std::byte*>(address);
}

SharedMemory::~SharedMemory() {
    munmap(begin_, size_);
}

void* SharedMemory::takeBytes(std::size_t bytes) {
    const std::size_t length = rounded(bytes);
    if (used_ + length > size_) throw std::bad_alloc();
    void* address = begin_ + used_;
    used_ += length;
    return address;
}

// Whole pages alone: what shares one with other memory stays.
void giveBack(void* memory, std::size_t bytes) {
    static const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (begin + page - 1) / page * page, last = (begin + bytes) / page * page;
    if (first < last) madvise(static_cast<std::byte*>(memory) + (first - begin), last - first, MADV_DONTNEED);
}

struct ChildProcess::System {
    pid_t child = 0;  // 0: it has been waited for
    int errorPipe = -1;
    ~System() {
        if (errorPipe >= 0) close(errorPipe);
    }
};

ChildProcess::ChildProcess(const ChildWork& work) : system_(std::make_unique<System>()) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error(fmt::format("cannot open a pipe: {}", std::strerror(errno)));
    system_->errorPipe = ends[0];
    const pid_t parent = getpid();
    system_->child = fork();
    const int error = errno;
    if (system_->child == 0) runChild(work, ends[1], parent);
    close(ends[1]);
    if (system_->child > 0) return;
    system_->child = 0;
    throw std::runtime_error(fmt::format("cannot start a process: {}", std::strerror(error)));
}

ChildProcess::~ChildProcess() {
    if (system_->child == 0) return;
    kill(system_->child, SIGKILL);
    collect();
}

// The pipe ends with the process.
bool ChildProcess::wait(int milliseconds) {
    if (system_->child == 0) return false;
    pollfd waiting{system_->errorPipe, POLLIN, 0};
    if (poll(&waiting, 1, milliseconds) <= 0) return true;
    char buffer[512];
    const ssize_t length = read(system_->errorPipe, buffer, sizeof buffer);
    if (length > 0) errors_.append(buffer, static_cast<std::size_t>(length));
    if (length > 0 || (length < 0 && errno == EINTR)) return true;
    collect();
    return false;
}

void ChildProcess::stop() {
    if (system_->child != 0) kill(system_->child, SIGTERM);
}

void ChildProcess::collect() {
    int status = 0;
    while (waitpid(system_->child, &status, 0) < 0 && errno == EINTR) {
    }
    system_->child = 0;
    if (WIFSIGNALED(status)) {
        fault_ = fmt::format("ended by signal {} ({})", WTERMSIG(status), strsignal(WTERMSIG(status)));
    }
}

void useUtc() {
    setenv("TZ", "UTC", 1);
    tzset();
}

}  // namespace kesto
