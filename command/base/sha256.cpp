#include "sha256.h"

#include <fmt/format.h>
#include <openssl/evp.h>

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
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha256(), nullptr) != 1) return {};
    std::string text;
    for (unsigned int i = 0; i < length; ++i) {
        text += fmt::format("{:02x}", digest[i]);
    }
    return text;
}

}  // namespace kesto
