#include "file_checksum.h"

#include <fmt/format.h>

#include <array>

#include "files.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace kesto {

std::string xxh128OfFile(const std::string& path) {
    XXH3_state_t state;
    XXH3_128bits_reset(&state);
    if (!readInPieces(path, [&](std::string_view piece) { XXH3_128bits_update(&state, piece.data(), piece.size()); }))
        return {};
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&state));
    std::string text;
    for (const unsigned char byte : canonical.digest) {
        text += fmt::format("{:02x}", byte);
    }
    return text;
}

}  // namespace kesto
