// A record filled from a model, as a host fills it, with every array guarded.
#ifndef KESTO_TESTS_HOST_RECORD_H
#define KESTO_TESTS_HOST_RECORD_H

#include <cstdint>
#include <string>
#include <string_view>

#include "AUEglobals.h"
#include "guarded_memory.h"
#include "model.h"

class HostRecord {
  public:
    explicit HostRecord(const Model& model);

    AUEglobals& record() { return record_; }

    // Runs the library's function and says in damage() what it wrote that it may not write.
    std::int32_t run(std::int32_t first, std::int32_t last);
    void free();
    const std::string& damage() const { return damage_; }

    // Entries and count of one of the host's series tables.
    SeriesEntry*& entries(Table which);
    std::int32_t& count(Table which);

    // The values of the first entry with this id, or null.
    float* find(Table which, std::int32_t id);

  private:
    void fillSeries(Table which, const Model& model);
    void checkRecord(const AUEglobals& before, bool freed);

    AUEglobals record_{};
    GuardedMemory memory_;
    std::string damage_;
};

// The eight output tables.
inline constexpr std::array<std::string_view, 6> kPotentialNames = {"NrgPot", "InfPot", "LosPot",
                                                                    "EvaPot", "CapPot", "OprPot"};
SeriesEntry* potentialTable(const AUEglobals& record, std::string_view name);

#endif
