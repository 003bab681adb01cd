// A network built by hand in the record, together with all that the record points to.
#ifndef KESTO_BENCH_NETWORK_H
#define KESTO_BENCH_NETWORK_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "AUEglobals.h"
#include "brands.h"

class Network {
  public:
    explicit Network(std::int32_t nSteps);
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;
    ~Network();

    // A group with rain and potentials of its own, and what it may have besides.
    std::int32_t addGroup();
    void giveHousehold(std::int32_t group);
    void giveWeather(std::int32_t group);

    // Adds a component and returns its id. It is of the brand that belongs to its type, or of another one.
    std::int32_t add(Type type, std::int32_t group, float size = 0.0F);
    std::int32_t add(Type type, std::int32_t group, float size, Brand brand);
    void connect(std::int32_t sender, std::int32_t senderPort, std::int32_t receiver, std::int32_t receiverPort);

    // A series of a component's own: a demand put in, factors of a multiplier, thresholds.
    using Table = std::vector<SeriesEntry>;
    using OfStep = float(std::int32_t step);
    void give(Table Network::*table, std::int32_t component, OfStep value);
    // A stored quantity or quality that starts at a value.
    void store(std::int32_t component, float quantity);
    void storeQuality(std::int32_t component, float quality);
    // A group of stores that a splitter balances.
    void balance(std::int32_t splitter, std::int32_t member, float beta);
    void traceSources() { record_.BuildTree = 1; }

    Table demands, multipliers, thresholds;

    // Lists the components by type in the table, each type in the order in which it stood.
    void sortByType();
    // Points the record at the finished tables.
    void seal();

    // A whole call of the engine, without freeing what it allocates. Ends the program when the run fails.
    void run(std::int32_t firstStep, std::int32_t lastStep);
    // Frees the outputs and puts the states back, so that the next run is the same as the last.
    void reset();
    // After a whole run: ends the program when it moved no water, or when a record or a state is no number.
    void requireSound() const;

    std::int32_t components() const { return static_cast<std::int32_t>(rows_.size()); }
    std::int32_t connections() const { return static_cast<std::int32_t>(connections_.size()); }
    std::int32_t steps() const { return record_.nSteps; }
    // Components by type code.
    std::vector<int> countTypes() const;
    // Bytes of all series and tables of the host, and of the output tables when every page of them is touched.
    std::size_t hostBytes() const;
    std::size_t outputBytes() const;

  private:
    SeriesEntry series(std::int32_t id, std::int32_t perStep, const std::function<OfStep>& value);
    void startAt(Table& table, std::int32_t component, float value);

    AUEglobals record_{};
    std::vector<std::int32_t> groups_;
    std::vector<ComponentRow> rows_;
    std::vector<ConnectionRow> connections_;
    std::vector<SpecificationRow> specifications_;
    Table rain_, temperature_, coldest_, warmest_, wind_, uses_, occupancy_, fluctuation_, quantities_, qualities_;
    std::vector<std::pair<float*, float>> initial_;  // elements 0 of the states
    std::vector<std::vector<float>> values_;
    std::vector<SplitEntry> splits_;
    std::vector<std::vector<std::int32_t>> members_;
};

#endif
