#include "files.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>

#include "platform.h"

namespace kesto {

namespace {

[[noreturn]] void fail(std::string_view what, const std::string& path, int error) {
    throw std::runtime_error(fmt::format("cannot {} {}: {}", what, path, std::strerror(error)));
}

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string_view nameOf(std::filesystem::file_type type) {
    switch (type) {
        case std::filesystem::file_type::directory:
            return "a folder";
        case std::filesystem::file_type::fifo:
            return "a pipe";
        case std::filesystem::file_type::socket:
            return "a socket";
        default:
            return "a device";
    }
}

// The system's number of what went wrong; 0: nothing did.
int writeAll(const std::string& path, std::string_view text) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return errno;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const int error = written ? 0 : errno;
    // What is buffered may meet the full disk only now.
    if (std::fclose(file) != 0 && error == 0) return errno;
    return error;
}

}  // namespace

std::size_t expectRegular(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (error) fail("read", path, error.value());
    if (status.type() != std::filesystem::file_type::regular) {
        throw std::runtime_error(
            fmt::format("cannot read {}: it is {}; expected a regular file", path, nameOf(status.type())));
    }
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error) fail("read", path, error.value());
    return size;
}

std::string readFile(const std::string& path, std::size_t largest) {
    if (const std::size_t size = expectRegular(path); size > largest) {
        throw std::runtime_error(fmt::format("cannot read {}: it has {} MB; expected at most {} MB", path,
                                             size / 1'000'000, largest / 1'000'000));
    }
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rb"));
    if (!file) fail("read", path, errno);
    std::string text;
    char buffer[1 << 16];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get()))
        text.append(buffer, count);
    if (std::ferror(file.get())) fail("read", path, errno);
    return text;
}

void writeFile(const std::string& path, std::string_view text) {
    if (const int error = writeAll(path, text)) fail("write", path, error);
}

void replaceFile(const std::string& path, std::string_view text) {
    namespace fs = std::filesystem;
    if (fs::exists(path) && !fs::is_regular_file(path)) return writeFile(path, text);
    const std::string aside =
        (fs::path(path).parent_path() / fmt::format(".kesto-{:08x}", std::random_device()())).string();
    int error = writeAll(aside, text);
    if (error == 0) error = syncToDisk(aside).value();
    std::error_code failure;
    if (error == 0) fs::rename(aside, path, failure);
    if (error == 0 && !failure) return;
    std::error_code ignored;
    fs::remove(aside, ignored);
    fail("write", path, error != 0 ? error : failure.value());
}

void makeFolder(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) fail("make the folder", path, error.value());
    if (!std::filesystem::is_directory(path)) fail("write into", path, ENOTDIR);
    if (const std::error_code denied = writeAccess(path)) fail("write into", path, denied.value());
}

std::string joined(const std::string& folder, std::string_view name) {
    return (std::filesystem::path(folder) / name).string();
}

}  // namespace kesto
