#include "files.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "platform.h"

namespace kesto {

namespace {

[[noreturn]] void fail(std::string_view what, const std::string& path, const std::error_code& error) {
    throw std::runtime_error(fmt::format("cannot {} {}: {}", what, path, reasonOf(error)));
}

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string_view kindOf(std::filesystem::file_type type) {
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

std::error_code writeAll(const std::string& path, std::string_view text) {
    std::FILE* file = openFile(path, "wb");
    if (!file) return lastError();
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const std::error_code error = written ? std::error_code() : lastError();
    // What is buffered may meet the full disk only now.
    if (std::fclose(file) != 0 && !error) return lastError();
    return error;
}

}  // namespace

std::filesystem::path pathOf(std::string_view name) {
    // Text in bytes of unsaid encoding would be none of UTF-8 on Windows.
    const auto* const begin = reinterpret_cast<const char8_t*>(name.data());
    return {begin, begin + name.size()};
}

std::string nameOf(const std::filesystem::path& path) {
    std::string name = path.string();
    if (std::filesystem::path::preferred_separator != '/') std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

std::size_t expectRegular(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(pathOf(path), error);
    if (error) fail("read", path, error);
    if (status.type() != std::filesystem::file_type::regular) {
        throw std::runtime_error(
            fmt::format("cannot read {}: it is {}; expected a regular file", path, kindOf(status.type())));
    }
    const std::uintmax_t size = std::filesystem::file_size(pathOf(path), error);
    if (error) fail("read", path, error);
    return size;
}

std::string readFile(const std::string& path, std::size_t largest) {
    if (const std::size_t size = expectRegular(path); size > largest) {
        throw std::runtime_error(fmt::format("cannot read {}: it has {} MB; expected at most {} MB", path,
                                             size / 1'000'000, largest / 1'000'000));
    }
    const std::unique_ptr<std::FILE, Close> file(openFile(path, "rb"));
    if (!file) fail("read", path, lastError());
    std::string text;
    char buffer[1 << 16];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get()))
        text.append(buffer, count);
    if (std::ferror(file.get())) fail("read", path, lastError());
    return text;
}

bool readInPieces(const std::string& path, const std::function<void(std::string_view piece)>& take) {
    if (!std::filesystem::is_regular_file(pathOf(path))) return false;  // a pipe may never begin
    const std::unique_ptr<std::FILE, Close> file(openFile(path, "rb"));
    if (!file) return false;
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    std::vector<char> buffer(1 << 18);
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
        take({buffer.data(), count});
    }
    return std::ferror(file.get()) == 0;
}

void writeFile(const std::string& path, std::string_view text) {
    if (const std::error_code error = writeAll(path, text)) fail("write", path, error);
}

void replaceFile(const std::string& path, std::string_view text) {
    namespace fs = std::filesystem;
    if (fs::exists(pathOf(path)) && !fs::is_regular_file(pathOf(path))) return writeFile(path, text);
    const std::string aside = nameOf(pathOf(path).parent_path() / fmt::format(".kesto-{:08x}", std::random_device()()));
    std::error_code error = writeAll(aside, text);
    if (!error) error = syncToDisk(aside);
    if (!error) error = moveFile(aside, path);
    if (!error) return;
    std::error_code ignored;
    fs::remove(pathOf(aside), ignored);
    fail("write", path, error);
}

void makeFolder(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(pathOf(path), error);
    if (error) fail("make the folder", path, error);
    if (!std::filesystem::is_directory(pathOf(path))) {
        fail("write into", path, std::make_error_code(std::errc::not_a_directory));
    }
    if (const std::error_code denied = writeAccess(path)) fail("write into", path, denied);
}

std::string joined(const std::string& folder, std::string_view name) {
    return nameOf(pathOf(folder) / pathOf(name));
}

}  // namespace kesto
