// Checksums and base64 by the libraries of the system.
#include <windows.h>
// After windows.h.
#include <bcrypt.h>
#include <wincrypt.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "base64.h"
#include "sha256.h"

namespace kesto {

namespace {

void expect(NTSTATUS status) {
    if (status < 0) throw std::runtime_error("Windows computes no SHA-256");
}

}  // namespace

struct Sha256::State {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;

    State() {
        expect(BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0));
        begin();
    }
    ~State() {
        if (hash) BCryptDestroyHash(hash);
        BCryptCloseAlgorithmProvider(algorithm, 0);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void begin() {
        if (hash) BCryptDestroyHash(hash);
        hash = nullptr;
        expect(BCryptCreateHash(algorithm, &hash, nullptr, 0, nullptr, 0, 0));
    }
};

Sha256::Sha256() : state_(std::make_unique<State>()) {}

Sha256::~Sha256() = default;

void Sha256::add(std::string_view text) {
    constexpr std::size_t kMost = 1 << 30;  // a count of 32 bits
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), kMost))) {
        // It is not written to.
        auto* const bytes = reinterpret_cast<PUCHAR>(const_cast<char*>(text.data()));
        expect(BCryptHashData(state_->hash, bytes, static_cast<ULONG>(std::min(text.size(), kMost)), 0));
    }
}

std::array<unsigned char, 32> Sha256::digest() {
    std::array<unsigned char, 32> digest{};
    expect(BCryptFinishHash(state_->hash, digest.data(), static_cast<ULONG>(digest.size()), 0));
    state_->begin();
    return digest;
}

std::string base64(std::span<const unsigned char> bytes) {
    constexpr DWORD kPlain = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
    const auto count = static_cast<DWORD>(bytes.size());
    DWORD length = 0;
    if (bytes.empty()) return {};
    CryptBinaryToStringA(bytes.data(), count, kPlain, nullptr, &length);  // with the zero at its end
    std::string text(length, '\0');
    if (!CryptBinaryToStringA(bytes.data(), count, kPlain, text.data(), &length)) {
        throw std::runtime_error("Windows writes no base64");
    }
    text.resize(length);
    return text;
}

}  // namespace kesto
