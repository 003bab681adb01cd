#include "weather.h"

#include <cmath>

namespace {

// 1 in the middle of winter, -1 in the middle of summer.
float winter(std::int32_t step) {
    return std::cos(6.2832F * static_cast<float>(step % 365) / 365.0F);
}

}  // namespace

// The last round of MurmurHash3 (Appleby), which spreads every bit.
float chance(std::int32_t number) {
    std::uint32_t h = static_cast<std::uint32_t>(number) * 0x9E3779B9U;
    h = (h ^ (h >> 16)) * 0x85EBCA6BU;
    h = (h ^ (h >> 13)) * 0xC2B2AE35U;
    h ^= h >> 16;
    return static_cast<float>(h >> 8) / 16777216.0F;
}

float rainfall(std::int32_t step) {
    if (chance(2 * step + 1) > 0.4F + 0.2F * winter(step)) return 0.0F;
    const float amount = chance(2 * step + 2);
    return 20.0F * amount * amount;
}

float temperature(std::int32_t step) {
    return 11.0F - 8.0F * winter(step);
}
