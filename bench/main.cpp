// Speed of runs through the shared library, of set-up alone, and of one step; memory. README.md says what each is.

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

#include "measure.h"
#include "networks.h"
#include "tank_loop.h"

namespace {

using Builder = std::function<void(Network&, std::int32_t)>;

struct Size {
    std::int32_t components;
    std::int32_t steps;
};
constexpr Size kSizes[] = {{100, 3650}, {1000, 3650}, {10000, 3650}, {100000, 365}};
constexpr Size kInCache = {1, 365};
constexpr Size kOneTypeSize = {1000, 3650};

double secondsOfCall(Network& network, std::int32_t firstStep, std::int32_t lastStep) {
    const Stopwatch watch;
    network.run(firstStep, lastStep);
    const double seconds = watch.seconds();
    network.reset();
    return seconds;
}

// A first run, that nothing is timed of: what memory it takes, and whether it moves water.
void watchRun(benchmark::State& state, Network& network, bool isRecorded) {
    const MemoryWatch memory;
    network.run(1, network.steps());
    const double peak = memory.peak();
    const double own = peak - memory.held();
    const double n = network.components();
    if (isRecorded) network.requireSound();
    network.reset();
    state.counters["peak_B"] = peak / n;
    state.counters["own_B"] = own / n;
    state.counters["tables_B"] = static_cast<double>(network.outputBytes()) / n;
    state.counters["host_B"] = static_cast<double>(network.hostBytes()) / n;
}

void solve(benchmark::State& state, Size size, const Builder& build, bool isRecorded) {
    const double tankStep = TankLoop(size.components, size.steps).secondsPerStep();
    Network network(size.steps);
    build(network, size.components);
    watchRun(state, network, isRecorded);
    double solved = 0.0;
    double whole = 0.0;
    double started = 0.0;
    for ([[maybe_unused]] auto iteration : state) {
        const double setUp = secondsOfCall(network, 1, 0);
        started += secondsOfCall(network, 1, 2) - setUp;
        const double taken = secondsOfCall(network, 1, size.steps);
        state.SetIterationTime(taken - setUp);
        solved += taken - setUp;
        whole += taken;
    }
    const double components = static_cast<double>(network.components()) * static_cast<double>(state.iterations());
    const double componentSteps = components * size.steps;
    state.counters["ns"] = 1e9 * solved / componentSteps;
    state.counters["start_ns"] = 1e9 * started / components;
    state.counters["tank_loops"] = solved / componentSteps / tankStep;
    state.counters["whole_loops"] = whole / componentSteps / tankStep;
}

void timeCalls(benchmark::State& state, Network& network, std::int32_t lastStep) {
    secondsOfCall(network, 1, lastStep);
    for ([[maybe_unused]] auto iteration : state)
        state.SetIterationTime(secondsOfCall(network, 1, lastStep));
}

// A call with no steps: order, routing, multipliers, outputs.
void setUp(benchmark::State& state, std::int32_t n, const Builder& build) {
    Network network(365);
    build(network, n);
    timeCalls(state, network, 0);
    state.counters["per_component_or_connection"] =
        benchmark::Counter(network.components() + network.connections(),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void oneStep(benchmark::State& state, std::int32_t n, const Builder& build) {
    Network network(365);
    build(network, n);
    timeCalls(state, network, 1);
}

void tankLoop(benchmark::State& state, Size size) {
    TankLoop loop(size.components, size.steps);
    for ([[maybe_unused]] auto iteration : state) {
        const double perStep = loop.secondsPerStep();
        state.SetIterationTime(perStep * size.components * size.steps);
        state.counters["ns"] = 1e9 * perStep;
    }
}

template <typename Function, typename... Arguments>
auto* add(const std::string& name, benchmark::TimeUnit unit, Function function, Arguments... arguments) {
    return benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { function(state, arguments...); })
        ->UseManualTime()
        ->Unit(unit);
}

void addAll() {
    for (const Size size : {kInCache, kSizes[0], kSizes[1], kSizes[2], kSizes[3]})
        add("tankLoop/" + std::to_string(size.components), benchmark::kMillisecond, tankLoop, size)->Iterations(1);
    const std::pair<const char*, Builder> networks[] = {
        {"city", buildCity},     {"cityByType", buildCityByType}, {"chain", buildChain},
        {"houses", buildHouses}, {"loops", buildLoops},           {"receivers", buildReceivers},
    };
    for (const auto& [name, build] : networks) {
        const std::string slashed = std::string("/") + name + "/";
        for (const Size size : kSizes) {
            const std::string n = slashed + std::to_string(size.components);
            add("solve" + n, benchmark::kMillisecond, solve, size, build, true);
            add("setUp" + n, benchmark::kMicrosecond, setUp, size.components, build);
        }
        add("oneStep" + slashed + "100", benchmark::kMicrosecond, oneStep, 100, build);
    }
    Network every(1);
    buildCity(every, 1200);
    const std::vector<int> counts = every.countTypes();
    for (int type = 0; type < static_cast<int>(counts.size()); ++type) {
        if (counts[static_cast<std::size_t>(type)] == 0) continue;
        const auto build = [type](Network& network, std::int32_t n) {
            buildOneType(network, n, static_cast<Type>(type));
        };
        add("type/" + std::to_string(type), benchmark::kMillisecond, solve, kOneTypeSize, Builder(build), false);
    }
}

}  // namespace

int main(int argc, char** argv) {
    addAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
