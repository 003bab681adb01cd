#include "sha256.h"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "files.h"
#include "platform.h"

namespace kesto {

namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

std::string Sha256::text() {
    std::string text;
    for (const unsigned char byte : digest()) {
        text += fmt::format("{:02x}", byte);
    }
    return text;
}

std::array<unsigned char, 32> sha256Of(std::string_view text) {
    Sha256 sum;
    sum.add(text);
    return sum.digest();
}

std::string sha256OfFile(const std::string& path) {
    if (!std::filesystem::is_regular_file(pathOf(path))) return {};  // a pipe may never begin
    const std::unique_ptr<std::FILE, Close> file(openFile(path, "rb"));
    if (!file) return {};
    Sha256 sum;
    std::vector<char> buffer(1 << 16);
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
        sum.add({buffer.data(), count});
    }
    if (std::ferror(file.get()) != 0) return {};
    return sum.text();
}

}  // namespace kesto
