#include "child.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace {

struct Pipe {
    int ends[2];
    Pipe() {
        if (pipe(ends) != 0) std::abort();
    }
};

void writeAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n <= 0) std::abort();
        done += static_cast<std::size_t>(n);
    }
}

[[noreturn]] void live(const std::function<std::string()>& body, unsigned seconds, const std::array<Pipe, 3>& pipes) {
    for (const Pipe& p : pipes)
        close(p.ends[0]);
    dup2(pipes[1].ends[1], STDOUT_FILENO);
    dup2(pipes[2].ends[1], STDERR_FILENO);
    alarm(seconds);
    try {
        writeAll(pipes[0].ends[1], body());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        std::fflush(stderr);
        _exit(3);
    }
    std::fflush(stdout);
    std::fflush(stderr);
    _exit(0);
}

// Reads all pipes until each has ended: a full one would hold the child up.
void collect(const std::array<Pipe, 3>& pipes, const std::array<std::string*, 3>& texts) {
    std::array<pollfd, 3> waiting{};
    for (std::size_t i = 0; i < pipes.size(); ++i)
        waiting[i] = {pipes[i].ends[0], POLLIN, 0};
    for (std::size_t open = pipes.size(); open > 0;) {
        if (poll(waiting.data(), waiting.size(), -1) < 0) continue;
        for (std::size_t i = 0; i < waiting.size(); ++i) {
            if (waiting[i].fd < 0 || waiting[i].revents == 0) continue;
            char buffer[65536];
            const ssize_t n = read(waiting[i].fd, buffer, sizeof buffer);
            if (n > 0) {
                texts[i]->append(buffer, static_cast<std::size_t>(n));
            } else {
                close(waiting[i].fd);
                waiting[i].fd = -1;
                --open;
            }
        }
    }
}

}  // namespace

bool ChildResult::exited() const {
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
bool ChildResult::aborted() const {
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
}

std::string ChildResult::describe() const {
    std::string text;
    if (WIFSIGNALED(status)) {
        text = WTERMSIG(status) == SIGALRM ? "took too long"
                                           : "ended by signal " + std::string(strsignal(WTERMSIG(status)));
    } else {
        text = "exit status " + std::to_string(WEXITSTATUS(status));
    }
    if (!stderr_.empty()) text += "; stderr: " + stderr_;
    if (!stdout_.empty()) text += "; stdout: " + stdout_;
    return text;
}

ChildResult runInChild(const std::function<std::string()>& body, unsigned seconds) {
    std::fflush(stdout);
    std::fflush(stderr);
    const std::array<Pipe, 3> pipes;
    const pid_t pid = fork();
    if (pid < 0) std::abort();
    if (pid == 0) live(body, seconds, pipes);
    for (const Pipe& p : pipes)
        close(p.ends[1]);
    ChildResult result;
    collect(pipes, {&result.answer, &result.stdout_, &result.stderr_});
    waitpid(pid, &result.status, 0);
    return result;
}
