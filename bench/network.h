// Networks of any size, built by hand in the record: what the benchmarks run.
#ifndef KESTO_BENCH_NETWORK_H
#define KESTO_BENCH_NETWORK_H

#include <cstdint>
#include <vector>

#include "AUEglobals.h"

// A record together with everything that it points to.
class Network {
  public:
    Network(std::int32_t nSteps, std::int32_t nGroups);
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;
    ~Network();

    // Adds a component and returns its id.
    std::int32_t add(std::int32_t type, std::int32_t group, std::int32_t brand, float size = 0.0F);
    void connect(std::int32_t sender, std::int32_t senderPort, std::int32_t receiver, std::int32_t receiverPort);
    // Gives a component a stored quantity that starts at `quantity`.
    void store(std::int32_t component, float quantity);

    // A whole call of the engine, without freeing what it allocates. Ends the program when the run fails.
    void run(std::int32_t firstStep, std::int32_t lastStep);
    // Frees the outputs and puts the states back, so that the next run is the same as the last.
    void reset();

    // Points the record at the finished tables.
    void seal();

    std::int32_t components() const { return static_cast<std::int32_t>(rows.size()); }
    std::int32_t steps() const { return record.nSteps; }

  private:
    SeriesEntry series(std::int32_t id, std::vector<float> values);

    AUEglobals record{};
    std::vector<std::int32_t> groups;
    std::vector<ComponentRow> rows;
    std::vector<ConnectionRow> connections;
    std::vector<SpecificationRow> specifications;
    std::vector<SeriesEntry> rain, uses, occupancy, fluctuation, stored;
    std::vector<float> initial;  // of the series in `stored`
    std::vector<std::vector<float>> values;
};

// A roof whose water runs through n - 2 links, one after the other, to a logger.
void buildChain(Network& network, std::int32_t n);

// n / kHouseSize houses side by side, each with a roof, a tank and appliances.
inline constexpr std::int32_t kHouseSize = 10;
void buildHouses(Network& network, std::int32_t n);

#endif
