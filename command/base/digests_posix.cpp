// Checksums and base64 by nettle.
#include <nettle/base64.h>
#include <nettle/sha2.h>

#include <array>
#include <cstdint>

#include "base64.h"
#include "sha256.h"

namespace kesto {

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

std::string base64(std::span<const unsigned char> bytes) {
    std::string text(BASE64_ENCODE_RAW_LENGTH(bytes.size()), '\0');
    base64_encode_raw(text.data(), bytes.size(), bytes.data());
    return text;
}

}  // namespace kesto
