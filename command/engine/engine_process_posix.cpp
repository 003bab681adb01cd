#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <stdexcept>

#include "engine_process.h"

namespace kesto {

namespace {

const ChildWork* childWork = nullptr;  // for the signal handlers, which get no argument

constexpr int kFaults[] = {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL};

struct Pipe {
    int out = -1, in = -1;

    Pipe() {
        int ends[2];
        if (pipe(ends) != 0) throw std::runtime_error(fmt::format("cannot open a pipe: {}", std::strerror(errno)));
        out = ends[0];
        in = ends[1];
    }
    ~Pipe() {
        closeEnd(out);
        closeEnd(in);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    // What is there, added to `text`; false at the end of the pipe.
    bool read(std::string& text) {
        char buffer[4096];
        const ssize_t length = ::read(out, buffer, sizeof buffer);
        if (length > 0) text.append(buffer, static_cast<std::size_t>(length));
        if (length > 0 || (length < 0 && errno == EINTR)) return true;
        closeEnd(out);
        return false;
    }

    static void closeEnd(int& end) {
        if (end >= 0) close(end);
        end = -1;
    }
};

extern "C" void keepResultsAndDie(int signal) {
    // Whoever presses the keys again must not cut the copy short; a fault within it ends the process at once.
    for (const int request : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(request, SIG_IGN);
    }
    if (childWork->keep) childWork->keep();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

// What a person sends to the terminal reaches this process, too, unless it was started to ignore it.
bool isIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

bool writeAll(int pipe, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t length = write(pipe, bytes.data() + done, bytes.size() - done);
        if (length < 0 && errno == EINTR) continue;
        if (length < 0) return false;
        done += static_cast<std::size_t>(length);
    }
    return true;
}

// Its status says whether the whole answer is in the pipe.
[[noreturn]] void runChild(const ChildWork& work, const Pipe& errors, const Pipe& answer, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    dup2(errors.in, STDERR_FILENO);
    childWork = &work;
    for (const int signal : kFaults) {
        std::signal(signal, keepResultsAndDie);
    }
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        if (work.leavesStopping) {
            std::signal(signal, SIG_IGN);
        } else if (signal == SIGTERM || !isIgnored(signal)) {
            std::signal(signal, keepResultsAndDie);
        }
    }
    _exit(writeAll(answer.in, work.run()) ? 0 : 1);
}

}  // namespace

void keepNothingMore() {
    for (const int request : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(request, SIG_IGN);
    }
    for (const int signal : kFaults) {
        std::signal(signal, SIG_DFL);
    }
}

struct ChildProcess::System {
    pid_t child = 0;  // 0: it has been waited for
    Pipe errors, answer;
};

ChildProcess::ChildProcess(const ChildWork& work) : system_(std::make_unique<System>()) {
    const pid_t parent = getpid();
    system_->child = fork();
    const int error = errno;
    if (system_->child == 0) runChild(work, system_->errors, system_->answer, parent);
    Pipe::closeEnd(system_->errors.in);
    Pipe::closeEnd(system_->answer.in);
    if (system_->child > 0) return;
    system_->child = 0;
    throw std::runtime_error(fmt::format("cannot start a process: {}", std::strerror(error)));
}

ChildProcess::~ChildProcess() {
    if (system_->child == 0) return;
    kill(system_->child, SIGKILL);
    collect();
}

// Both pipes end with the process.
bool ChildProcess::wait(int milliseconds) {
    if (system_->child == 0) return false;
    pollfd waiting[] = {{system_->errors.out, POLLIN, 0}, {system_->answer.out, POLLIN, 0}};
    if (poll(waiting, 2, milliseconds) <= 0) return true;
    if (waiting[0].revents) system_->errors.read(errors_);
    if (waiting[1].revents) system_->answer.read(received_);
    if (system_->errors.out >= 0 || system_->answer.out >= 0) return true;
    collect();
    return false;
}

void ChildProcess::waitForAny(const std::vector<const ChildProcess*>& children, Bell& bell, int milliseconds) {
    std::vector<pollfd> waiting{{bell.handle_, POLLIN, 0}};
    for (const ChildProcess* child : children) {
        waiting.push_back({child->system_->errors.out, POLLIN, 0});
        waiting.push_back({child->system_->answer.out, POLLIN, 0});
    }
    poll(waiting.data(), waiting.size(), milliseconds);
    bell.silence();
}

void ChildProcess::stop() {
    if (system_->child != 0) kill(system_->child, SIGTERM);
}

void ChildProcess::collect() {
    int status = 0;
    while (waitpid(system_->child, &status, 0) < 0 && errno == EINTR) {
    }
    system_->child = 0;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) answer_ = std::move(received_);
    if (WIFSIGNALED(status)) {
        fault_ = fmt::format("ended by signal {} ({})", WTERMSIG(status), strsignal(WTERMSIG(status)));
    }
}

int startProgram(int argc, char** argv, int (*program)(int argc, char** argv)) {
    return program(argc, argv);
}

void useUtc() {
    setenv("TZ", "UTC", 1);
    tzset();
}

}  // namespace kesto
