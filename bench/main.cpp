// Speed of whole runs through the shared library, in component-steps per second, and of set-up alone.
//
// Only the call of KESTO_simul is timed: freeing its outputs and putting the states back lie outside. The clock is the
// thread's processor time, so that other work on the machine does not count. Every result also stands in units of the
// tank loop below, measured in the same process: machines differ, the ratio much less.

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "network.h"

namespace {

constexpr std::int32_t kSteps = 365;

double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// One tank over many steps, written the way one would without an engine: what a component-step costs at least.
struct TankLoop {
    static constexpr std::size_t kLength = 3650;
    std::vector<float> inflow, demand, stored, deficit, overflow;

    TankLoop() : inflow(kLength), demand(kLength), stored(kLength), deficit(kLength), overflow(kLength) {
        for (std::size_t k = 0; k < kLength; ++k) {
            inflow[k] = k % 7 == 0 ? 900.0F : k % 3 == 0 ? 300.0F : 0.0F;
            demand[k] = 150.0F;
        }
    }

    void run() {
        constexpr float V = 3000.0F;
        float S = 500.0F;
        for (std::size_t k = 0; k < kLength; ++k) {
            const float net = inflow[k] + S - demand[k];
            const float available = std::max(net, 0.0F);
            S = std::min(available, V);
            stored[k] = S;
            deficit[k] = std::max(-net, 0.0F);
            overflow[k] = available - S;
        }
    }
};

// Seconds that the loop takes for one step: the median of many runs.
double tankStepSeconds() {
    static const double seconds = [] {
        TankLoop loop;
        std::vector<double> runs(301);
        for (double& run : runs) {
            const double begin = processorSeconds();
            loop.run();
            benchmark::DoNotOptimize(loop.overflow.data());
            benchmark::ClobberMemory();
            run = processorSeconds() - begin;
        }
        std::nth_element(runs.begin(), runs.begin() + 150, runs.end());
        return runs[150] / static_cast<double>(TankLoop::kLength);
    }();
    return seconds;
}

void reportRate(benchmark::State& state, double componentSteps, double seconds) {
    const double total = componentSteps * static_cast<double>(state.iterations());
    state.counters["component_steps"] = benchmark::Counter(total, benchmark::Counter::kIsRate);
    state.counters["tank_loops"] = seconds / total / tankStepSeconds();
}

void tankLoop(benchmark::State& state) {
    TankLoop loop;
    double seconds = 0.0;
    for ([[maybe_unused]] auto iteration : state) {
        const double begin = processorSeconds();
        loop.run();
        benchmark::DoNotOptimize(loop.overflow.data());
        benchmark::ClobberMemory();
        const double taken = processorSeconds() - begin;
        state.SetIterationTime(taken);
        seconds += taken;
    }
    reportRate(state, static_cast<double>(TankLoop::kLength), seconds);
}

double timeRuns(benchmark::State& state, Network& network, std::int32_t lastStep) {
    double seconds = 0.0;
    for ([[maybe_unused]] auto iteration : state) {
        const double begin = processorSeconds();
        network.run(1, lastStep);
        const double taken = processorSeconds() - begin;
        state.SetIterationTime(taken);
        seconds += taken;
        network.reset();
    }
    return seconds;
}

using Builder = void (*)(Network&, std::int32_t);

void wholeRun(benchmark::State& state, Builder build) {
    const auto n = static_cast<std::int32_t>(state.range(0));
    Network network(kSteps, std::max(n / kHouseSize, 1));
    build(network, n);
    const double seconds = timeRuns(state, network, kSteps);
    reportRate(state, static_cast<double>(network.components()) * kSteps, seconds);
}

// A call with no steps: order, routing, multipliers, outputs.
void setUpAlone(benchmark::State& state, Builder build) {
    const auto n = static_cast<std::int32_t>(state.range(0));
    Network network(kSteps, std::max(n / kHouseSize, 1));
    build(network, n);
    timeRuns(state, network, 0);
    state.counters["components"] =
        benchmark::Counter(static_cast<double>(network.components()), benchmark::Counter::kIsIterationInvariantRate);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10)->Arg(100)->Arg(1000)->Arg(5000)->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(tankLoop)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(wholeRun, chain, buildChain)->Apply(sizes);
BENCHMARK_CAPTURE(wholeRun, houses, buildHouses)->Apply(sizes);
BENCHMARK_CAPTURE(setUpAlone, chain, buildChain)->Apply(sizes);
BENCHMARK_CAPTURE(setUpAlone, houses, buildHouses)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
