#include <dlfcn.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "programs.h"

extern "C" char** environ;

namespace kesto {

namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

[[noreturn]] void fail(const std::string& what, int error) {
    throw std::runtime_error(fmt::format("cannot {}: {}", what, std::strerror(error)));
}

// Gone when it is closed. Unlike pipes, files cannot block two processes that both write.
File makeTemporary() {
    File file(std::tmpfile());
    if (!file) fail("make a temporary file", errno);
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

}  // namespace

const void* loadTable(const std::vector<std::string>& files, const std::string& name) {
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::string reasons;
    for (const std::string& file : files) {
        void* const library = dlopen((folder / file).c_str(), RTLD_NOW | RTLD_LOCAL);
        const void* const table = library ? dlsym(library, name.c_str()) : nullptr;
        if (table) return table;
        reasons += fmt::format("{}{}", reasons.empty() ? "" : "; ", dlerror());
    }
    throw std::runtime_error(fmt::format("cannot load a library of this command: {}", reasons));
}

ProgramRun runProgram(const std::vector<std::string>& arguments, std::string_view input) {
    const File in = makeTemporary(), out = makeTemporary(), errors = makeTemporary();
    std::fwrite(input.data(), 1, input.size(), in.get());
    if (std::fflush(in.get()) != 0) fail("write a temporary file", errno);
    std::rewind(in.get());

    std::vector<std::string> words = arguments;
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fileno(in.get()), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(out.get()), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(errors.get()), STDERR_FILENO);
    pid_t child = 0;
    const int failure = posix_spawnp(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure == ENOENT) return {};
    if (failure != 0) fail(fmt::format("start \"{}\"", words[0]), failure);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return {true, WIFEXITED(status) && WEXITSTATUS(status) == 0, readAll(out.get()), readAll(errors.get())};
}

std::string_view installGraphviz() {
    return "install graphviz (Debian: apt-get install graphviz)";
}

}  // namespace kesto
