// Floats compared and written to the bit.
#ifndef KESTO_TESTS_BITS_H
#define KESTO_TESTS_BITS_H

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

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

#endif
