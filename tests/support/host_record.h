// A record filled from a model, as a host fills it, with every array guarded.
#ifndef KESTO_TESTS_HOST_RECORD_H
#define KESTO_TESTS_HOST_RECORD_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "AUEglobals.h"
#include "guarded_memory.h"
#include "model.h"

class HostRecord {
  public:
    explicit HostRecord(const Model& model);

    AUEglobals& record() { return record_; }

    // Runs the library's function and says in damage() what it wrote that it may not write. What a fuzzer's own
    // invariant throws passes through.
    std::int32_t run(std::int32_t first, std::int32_t last);
    void free();
    const std::string& damage() const { return damage_; }

    // Entries and count of one of the host's series tables.
    SeriesEntry*& entries(Table which) { return record_.*kTables[static_cast<std::size_t>(which)].entries; }
    std::int32_t& count(Table which) { return record_.*kTables[static_cast<std::size_t>(which)].count; }

    // Puts two series into the same memory.
    void overlap(const Overlap& overlap);

    // The first entry with this id, and its values; or null.
    SeriesEntry* findEntry(Table which, std::int32_t id);
    float* find(Table which, std::int32_t id);

  private:
    void fillSeries(Table which, const Model& model);
    void checkRecord(const AUEglobals& before, bool freed);

    AUEglobals record_{};
    GuardedMemory memory_;
    std::string damage_;
};

struct PotentialTable {
    std::string_view name;
    SeriesEntry* AUEglobals::*entries;
};
inline constexpr std::array<PotentialTable, 6> kPotentialTables = {{
    {"NrgPot", &AUEglobals::NrgPot},
    {"InfPot", &AUEglobals::InfPot},
    {"LosPot", &AUEglobals::LosPot},
    {"EvaPot", &AUEglobals::EvaPot},
    {"CapPot", &AUEglobals::CapPot},
    {"OprPot", &AUEglobals::OprPot},
}};

// A series that a host finds after a call: of an output table, the quantities or qualities of one, or a state.
struct Result {
    std::string_view name;  // of the table, and which part of its signals
    std::int32_t entry;
    std::int32_t id;
    const float* values;
    std::size_t stride;
    std::size_t steps;

    float operator[](std::size_t step) const { return values[step * stride]; }
};

// Goes through all that there are, table by table.
void forEachResult(const AUEglobals& record, const std::function<void(const Result&)>& visit);

#endif
