// Where things stand in the tables of one call, so that a look-up need not scan them.
//
// The host's tables do not change during a call, so the first entry that matches is the same at every step. An index
// gives the very entry that a scan from the first element would give. Outside a call look-ups scan.
#ifndef KESTO_COMPONENTS_LOOKUP_INDEX_H
#define KESTO_COMPONENTS_LOOKUP_INDEX_H

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "AUEglobals.h"
#include "components/lookup.h"
#include "components/series.h"
#include "components/type_codes.h"

// Positions by key, ascending within a key.
template <typename Key>
class Positions {
  public:
    void add(Key key, std::int32_t position) { entries_.emplace_back(key, position); }
    void sort() { std::sort(entries_.begin(), entries_.end()); }

    // The first position of a key at or after `from`; -1 without one.
    std::int32_t first(Key key, std::int32_t from = 0) const {
        const std::pair<Key, std::int32_t> wanted(key, from);
        const auto entry = std::lower_bound(entries_.begin(), entries_.end(), wanted);
        return entry != entries_.end() && entry->first == key ? entry->second : -1;
    }

  private:
    std::vector<std::pair<Key, std::int32_t>> entries_;
};

inline bool isReservoir(const ComponentRow& row) {
    return row.techid == static_cast<float>(code::kReservoir);
}

// Whether a specification row counts.
inline bool isSelected(const SpecificationRow& row) {
    return row.select1 == 1.0F && row.select2 == 1.0F;
}

// The tables of a record whose outputs are allocated.
struct LookupIndex {
    // May throw std::bad_alloc.
    LookupIndex(const AUEglobals* Globals, const std::vector<std::int32_t>& CompntId, const RCVTOLEAFS& Receivers);

    const Positions<std::int32_t>& ofKind(Series kind) const;

    Positions<float> rows;
    Positions<float> reservoirs;                        // their rows, by key
    Positions<std::pair<float, float>> specifications;  // by brand and number
    std::vector<Positions<std::int32_t>> series;        // by kind; the potentials share the last one
    Positions<std::int32_t> frequencies;
    Positions<std::int32_t> logs;
    Positions<std::int32_t> waterBodies;
    Positions<std::int32_t> splits;
    Positions<std::int32_t> sequence;   // places in the order of calculation
    Positions<std::int32_t> receivers;  // places in the table of paths
};

// While one lives, look-ups use its index; null: they scan.
class UseIndex {
  public:
    explicit UseIndex(const LookupIndex* index);
    UseIndex(const UseIndex&) = delete;
    UseIndex& operator=(const UseIndex&) = delete;
    ~UseIndex();
};

#endif
