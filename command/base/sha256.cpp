#include "sha256.h"

#include <fmt/format.h>
#include <nettle/sha2.h>

#include <array>
#include <cstdint>
#include <stdexcept>

#include "files.h"

namespace kesto {

std::string sha256OfFile(const std::string& path) {
    std::string bytes;
    try {
        bytes = readFile(path, kLargestTable);
    } catch (const std::runtime_error&) {
        return {};
    }
    sha256_ctx context;
    sha256_init(&context);
    sha256_update(&context, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&context, digest.size(), digest.data());
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += fmt::format("{:02x}", byte);
    }
    return text;
}

}  // namespace kesto
