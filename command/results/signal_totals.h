// What holds of all steps of a series, found in one go while its values are in the cache.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "AUEglobals.h"

namespace kesto {

// Of sound values; what is no number lies in none.
struct SoundRange {
    float least, most;

    bool contains(float value) const { return (value >= least) & (value <= most); }
};
inline constexpr SoundRange kFinite{std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max()};
inline constexpr SoundRange kSoundQuality{-1, 1e9F};

// The stride, in floats, is a constant, so that the compiler can check several values at a time.
template <std::size_t kStride>
bool areAllIn(const SoundRange& range, const float* values, std::size_t steps) {
    std::uint32_t outside = 0;
    for (std::size_t step = 0; step < steps; ++step) {
        outside |= static_cast<std::uint32_t>(!range.contains(values[step * kStride]));
    }
    return outside == 0;
}

inline constexpr std::size_t kSignalStride = sizeof(Signal) / sizeof(float);

// The quantity of a signal; a mark of absence, -1, is no amount.
inline double amount(const Signal& signal) {
    constexpr float kAbsent = -1.0F;
    return signal.quantity == kAbsent ? 0 : static_cast<double>(signal.quantity);
}

struct Sum {
    double total = 0;
    double magnitude = 0;  // of absolute amounts
};

struct SignalTotals {
    double quantity = 0;
    Sum amount;
    bool isSound = true;  // all quantities are numbers, all qualities sound
};

SignalTotals totalsOf(const Signal* signals, std::size_t steps);
double totalOf(const float* values, std::size_t steps);

}  // namespace kesto
