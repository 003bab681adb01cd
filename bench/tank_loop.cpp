#include "tank_loop.h"

#include <benchmark/benchmark.h>

#include <algorithm>

#include "measure.h"
#include "weather.h"

TankLoop::TankLoop(std::int32_t tanks, std::int32_t steps)
    : steps_(static_cast<std::size_t>(steps)), tanks_(static_cast<std::size_t>(tanks)) {
    for (Tank& tank : tanks_) {
        for (std::int32_t k = 0; k < steps; ++k)
            tank.inflow.push_back(72.0F * rainfall(k));
        tank.quality.assign(steps_, 10.0F);
        tank.demand.assign(steps_, 150.0F);
        for (auto* series :
             {&tank.stored, &tank.deficit, &tank.overflow, &tank.released, &tank.capacityCost, &tank.operatingCost})
            series->assign(steps_, 0.0F);
    }
}

void TankLoop::run() {
    constexpr float V = 3000.0F;
    for (Tank& tank : tanks_) {
        const float* const inflow = tank.inflow.data();
        const float* const quality = tank.quality.data();
        const float* const demand = tank.demand.data();
        float* const stored = tank.stored.data();
        float* const deficit = tank.deficit.data();
        float* const overflow = tank.overflow.data();
        float* const released = tank.released.data();
        float* const capacityCost = tank.capacityCost.data();
        float* const operatingCost = tank.operatingCost.data();
        float S = 500.0F;
        for (std::size_t k = 0; k < steps_; ++k) {
            const float net = inflow[k] + S - demand[k];
            const float available = std::max(net, 0.0F);
            S = std::min(available, V);
            stored[k] = S;
            deficit[k] = std::max(-net, 0.0F);
            overflow[k] = available - S;
            released[k] = quality[k];
            capacityCost[k] += 0.3F;
            operatingCost[k] += 0.03F;
        }
        benchmark::ClobberMemory();
    }
}

double TankLoop::secondsPerStep() {
    // A clock takes as long as some hundred steps.
    const std::size_t steps = tanks_.size() * steps_;
    const std::size_t rounds = 100000 / steps + 1;
    run();
    std::vector<double> seconds;
    for (double sum = 0.0; seconds.size() < 5 || sum < 0.1; sum += seconds.back()) {
        const Stopwatch watch;
        for (std::size_t round = 0; round < rounds; ++round)
            run();
        seconds.push_back(watch.seconds());
    }
    const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::nth_element(seconds.begin(), middle, seconds.end());
    return *middle / static_cast<double>(rounds * steps);
}
