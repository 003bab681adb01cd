#include "sha256.h"

#include <fmt/format.h>
#include <nettle/sha2.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

namespace kesto {

namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

std::string sha256OfFile(const std::string& path) {
    if (!std::filesystem::is_regular_file(path)) return {};  // a pipe may never begin
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rb"));
    if (!file) return {};
    sha256_ctx context;
    sha256_init(&context);
    std::vector<std::uint8_t> buffer(1 << 16);
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
        sha256_update(&context, count, buffer.data());
    }
    if (std::ferror(file.get()) != 0) return {};
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&context, digest.size(), digest.data());
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += fmt::format("{:02x}", byte);
    }
    return text;
}

}  // namespace kesto
