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

struct Sha256::State {
    sha256_ctx context;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
    sha256_init(&state_->context);
}

Sha256::~Sha256() = default;

void Sha256::add(std::string_view text) {
    sha256_update(&state_->context, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
}

std::array<unsigned char, 32> Sha256::digest() {
    std::array<unsigned char, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&state_->context, digest.size(), digest.data());
    return digest;
}

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
    if (!std::filesystem::is_regular_file(path)) return {};  // a pipe may never begin
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rb"));
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
