#include "signal_totals.h"

#include <cmath>

#include "lane_sum.h"

namespace kesto {

SignalTotals totalsOf(const Signal* signals, std::size_t steps) {
    SignalTotals totals;
    if (steps == 0) return totals;
    totals.quantity = laneSum(steps, [=](std::size_t step) { return static_cast<double>(signals[step].quantity); });
    totals.isSound = areAllIn<kSignalStride>(kSoundQuality, &signals->quality, steps);
    // Nearly always: nothing is absent, and no amount below 0.
    constexpr SoundRange kPlain{0, kFinite.most};
    if (areAllIn<kSignalStride>(kPlain, &signals->quantity, steps)) {
        totals.amount = {totals.quantity, totals.quantity};
        return totals;
    }
    totals.isSound = totals.isSound && areAllIn<kSignalStride>(kFinite, &signals->quantity, steps);
    totals.amount = {laneSum(steps, [=](std::size_t step) { return amount(signals[step]); }),
                     laneSum(steps, [=](std::size_t step) { return std::abs(amount(signals[step])); })};
    return totals;
}

double totalOf(const float* values, std::size_t steps) {
    return laneSum(steps, [=](std::size_t step) { return static_cast<double>(values[step]); });
}

}  // namespace kesto
