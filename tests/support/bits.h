// Floats compared and written to the bit.
#ifndef KESTO_TESTS_BITS_H
#define KESTO_TESTS_BITS_H

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

// Same bits; any NaN equals any NaN.
inline bool same(float a, float b) {
    if (std::isnan(a) && std::isnan(b)) return true;
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

// The shortest decimal that reads back as this float; "nan" without sign.
inline std::string written(float value) {
    if (std::isnan(value)) return "nan";
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return std::string(text, end);
}

// A number for a text: FNV-1a, from the number of what comes before it.
inline std::uint64_t fingerprint(std::string_view text, std::uint64_t before = 14695981039346656037ULL) {
    for (const char c : text)
        before = (before ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    return before;
}

#endif
