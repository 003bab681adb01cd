// Sums over steps, in four lanes side by side: an addition need not wait for the one before it.
#pragma once

#include <array>
#include <cstddef>

namespace kesto {

// Of `valueOf(step)`.
template <class ValueOf>
double laneSum(std::size_t steps, const ValueOf& valueOf) {
    constexpr std::size_t kLanes = 4;
    std::array<double, kLanes> lanes{};
    const std::size_t whole = steps - steps % kLanes;
    for (std::size_t step = 0; step < whole; step += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            lanes[lane] += valueOf(step + lane);
        }
    }
    for (std::size_t step = whole; step < steps; ++step) {
        lanes[step - whole] += valueOf(step);
    }
    return lanes[0] + lanes[1] + lanes[2] + lanes[3];
}

}  // namespace kesto
