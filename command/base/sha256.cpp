#include "sha256.h"

#include <fmt/format.h>

#include "files.h"

namespace kesto {

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
    Sha256 sum;
    return readInPieces(path, [&](std::string_view piece) { sum.add(piece); }) ? sum.text() : "";
}

}  // namespace kesto
