#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "draw.h"

extern "C" char** environ;

namespace kesto {

namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

// Gone when it is closed. Unlike pipes, files cannot block two processes that both write.
File makeTemporary() {
    File file(std::tmpfile());
    if (!file) throw std::runtime_error(fmt::format("cannot make a temporary file: {}", std::strerror(errno)));
    return file;
}

std::string readAll(std::FILE* file) {
    std::rewind(file);
    std::string text;
    char buffer[1 << 16];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file))
        text.append(buffer, count);
    return text;
}

// Status of `dot` as of waitpid.
int runDot(const std::string& format, std::FILE* in, std::FILE* out, std::FILE* errors) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fileno(in), 0);
    posix_spawn_file_actions_adddup2(&actions, fileno(out), 1);
    posix_spawn_file_actions_adddup2(&actions, fileno(errors), 2);
    std::string program = "dot", option = "-T" + format;
    char* arguments[] = {program.data(), option.data(), nullptr};
    pid_t child = 0;
    const int failure = posix_spawnp(&child, "dot", &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure == ENOENT) {
        throw std::runtime_error(
            "the program \"dot\" of Graphviz was not found; install graphviz (Debian: apt-get install graphviz)");
    }
    if (failure != 0) throw std::runtime_error(fmt::format("cannot start \"dot\": {}", std::strerror(failure)));
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

}  // namespace

std::string renderGraph(const std::string& dot, const std::string& format) {
    const File in = makeTemporary(), out = makeTemporary(), errors = makeTemporary();
    std::fwrite(dot.data(), 1, dot.size(), in.get());
    if (std::fflush(in.get()) != 0) throw std::runtime_error("cannot hand the graph to \"dot\"");
    std::rewind(in.get());
    if (const int status = runDot(format, in.get(), out.get(), errors.get()); status != 0) {
        throw std::runtime_error(fmt::format("\"dot -T{}\" failed: {}", format, readAll(errors.get())));
    }
    return readAll(out.get());
}

}  // namespace kesto
