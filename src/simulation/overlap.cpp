#include "simulation/overlap.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include "components/series.h"

namespace {

constexpr std::size_t kKinds = 11;  // appliances' frequencies a step

// The series that the host gives: all kinds before the potentials.
constexpr std::span kHostSeries(kSeries, static_cast<std::size_t>(Series::NrgPot));

struct Range {
    std::uintptr_t begin;
    std::uintptr_t end;
};

template <typename Element>
Range rangeOf(const Element* first, std::size_t count) {
    const auto begin = reinterpret_cast<std::uintptr_t>(first);
    return {begin, begin + (first ? count * sizeof(Element) : 0)};
}

// Ranges in which overlaps with others are looked for.
class Ranges {
  public:
    void add(const Range& range) {
        if (range.begin < range.end) ranges_.push_back(range);
    }
    template <typename Row>
    void addTable(const Row* table, std::int32_t count) {
        add(rangeOf(table, static_cast<std::size_t>(std::max(count, 0))));
    }

    // To be called when all are there; says whether any two overlap. From then on each range ends where the last of
    // those up to it ends.
    bool sort() {
        std::sort(ranges_.begin(), ranges_.end(), [](const Range& a, const Range& b) { return a.begin < b.begin; });
        bool overlap = false;
        for (std::size_t i = 1; i < ranges_.size(); ++i) {
            overlap = overlap || ranges_[i].begin < ranges_[i - 1].end;
            ranges_[i].end = std::max(ranges_[i].end, ranges_[i - 1].end);
        }
        return overlap;
    }

    // The last one that begins before the end of `other`, if it or one before it reaches into `other`.
    const Range* find(const Range& other) const {
        const auto after = std::partition_point(ranges_.begin(), ranges_.end(),
                                                [&](const Range& range) { return range.begin < other.end; });
        return after != ranges_.begin() && other.begin < (after - 1)->end ? &*(after - 1) : nullptr;
    }
    std::size_t indexOf(const Range& range) const { return static_cast<std::size_t>(&range - ranges_.data()); }
    std::size_t size() const { return ranges_.size(); }

  private:
    std::vector<Range> ranges_;
};

Ranges tablesOf(const AUEglobals& record) {
    Ranges tables;
    tables.add(rangeOf(&record, 1));
    tables.addTable(record.Net_Compnt, record.nComps);
    tables.addTable(record.TechSpecs, record.nTechSpecs);
    tables.addTable(record.FreqSer, record.nFreqSer);
    for (const SeriesKind& kind : kHostSeries)
        tables.addTable(record.*kind.table, record.*kind.count);
    tables.addTable(record.Splits, record.nSplits);
    for (std::int32_t i = 0; record.Splits && i < record.nSplits; ++i)
        tables.addTable(record.Splits[i].members, record.Splits[i].nMembers);
    tables.sort();
    return tables;
}

std::span<const SeriesEntry> entriesOf(const SeriesEntry* table, std::int32_t count) {
    return {table, static_cast<std::size_t>(table ? std::max(count, 0) : 0)};
}
std::span<const SeriesEntry> entriesOf(const AUEglobals& record, const SeriesKind& kind) {
    return entriesOf(record.*kind.table, record.*kind.count);
}

std::size_t lengthOfSeries(const AUEglobals& record) {
    return static_cast<std::size_t>(std::max(record.nSteps, 0));
}

bool isState(const SeriesKind& kind) {
    return kind.table == &AUEglobals::WatQuant || kind.table == &AUEglobals::WatQual;
}

bool isTemperature(const SeriesKind& kind) {
    return kind.table == &AUEglobals::Tmin || kind.table == &AUEglobals::Tmax;
}

}  // namespace

bool statesLieInTables(const AUEglobals& record) {
    const Ranges tables = tablesOf(record);
    const std::size_t length = lengthOfSeries(record);
    for (const SeriesKind& kind : kHostSeries) {
        if (!isState(kind)) continue;
        for (const SeriesEntry& entry : entriesOf(record, kind)) {
            if (tables.find(rangeOf(entry.Value, length))) return true;
        }
    }
    return false;
}

Overlap overlapOfWritten(const AUEglobals& record, const std::vector<Notes::Access>& accesses) {
    std::vector<const void*> written;
    for (const Notes::Access& access : accesses) {
        if (access.writes) written.push_back(access.memory);
    }
    std::sort(written.begin(), written.end());
    written.erase(std::unique(written.begin(), written.end()), written.end());
    const std::size_t length = lengthOfSeries(record);
    Ranges states;
    for (const void* const memory : written)
        states.add(rangeOf(static_cast<const float*>(memory), length));
    Overlap overlap = states.sort() ? Overlap::OfSeries : Overlap::None;

    std::vector<bool> isSeen(states.size(), false);  // whether the entry that is the state itself has come
    const auto look = [&](const Range& series, bool mayBeItself, Overlap with) {
        const Range* const state = states.find(series);
        if (!state) return;
        const std::size_t index = states.indexOf(*state);
        const bool isItself = mayBeItself && state->begin == series.begin && !isSeen[index];
        if (isItself) isSeen[index] = true;
        if (!isItself) overlap = std::max(overlap, with);
    };
    for (const SeriesKind& kind : kHostSeries) {
        for (const SeriesEntry& entry : entriesOf(record, kind))
            look(rangeOf(entry.Value, length), isState(kind),
                 isTemperature(kind) ? Overlap::OfTemperatures : Overlap::OfSeries);
    }
    for (const SeriesEntry& entry : entriesOf(record.FreqSer, record.nFreqSer))
        look(rangeOf(entry.Value, kKinds * length), false, Overlap::OfSeries);
    return overlap;
}
