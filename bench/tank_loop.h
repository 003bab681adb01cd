// The reference: tanks written as plain loops without an engine, the way one would by hand.
#ifndef KESTO_BENCH_TANK_LOOP_H
#define KESTO_BENCH_TANK_LOOP_H

#include <cstdint>
#include <vector>

// Tanks with nine series of memory each; one tank after the other runs all its steps.
class TankLoop {
  public:
    TankLoop(std::int32_t tanks, std::int32_t steps);

    void run();

    // Seconds for one step of one tank: the median of some runs.
    double secondsPerStep();

  private:
    struct Tank {
        std::vector<float> inflow, quality, demand, stored, deficit, overflow, released, capacityCost, operatingCost;
    };
    std::size_t steps_;
    std::vector<Tank> tanks_;
};

#endif
