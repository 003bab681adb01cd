#include "simulation/overlap.h"

#include <algorithm>
#include <cstdint>

#include "components/series.h"

namespace {

constexpr std::size_t kKinds = 11;  // appliances' frequencies a step

struct Interval {
    std::uintptr_t begin;
    std::uintptr_t end;
    bool isWritten;
};

class HostMemory {
  public:
    explicit HostMemory(const std::vector<Notes::Access>& accesses) {
        for (const Notes::Access& access : accesses) {
            if (access.writes) written_.push_back(access.memory);
        }
        std::sort(written_.begin(), written_.end());
    }

    template <typename Element>
    void add(const Element* first, std::size_t count) {
        if (!first || count == 0) return;
        const auto begin = reinterpret_cast<std::uintptr_t>(first);
        const bool isWritten = std::binary_search(written_.begin(), written_.end(), static_cast<const void*>(first));
        intervals_.push_back({begin, begin + count * sizeof(Element), isWritten});
    }
    template <typename Entry>
    void addTable(const Entry* table, std::int32_t count) {
        add(table, static_cast<std::size_t>(std::max(count, 0)));
    }
    void addSeries(const SeriesEntry* table, std::int32_t count, std::size_t length) {
        addTable(table, count);
        for (std::int32_t i = 0; table && i < count; ++i)
            add(table[i].Value, length);
    }

    bool writesOverlap() {
        std::sort(intervals_.begin(), intervals_.end(),
                  [](const Interval& a, const Interval& b) { return a.begin < b.begin; });
        std::uintptr_t end = 0;
        std::uintptr_t writtenEnd = 0;
        for (const Interval& interval : intervals_) {
            if (interval.begin < (interval.isWritten ? end : writtenEnd)) return true;
            end = std::max(end, interval.end);
            if (interval.isWritten) writtenEnd = end;
        }
        return false;
    }

  private:
    std::vector<const void*> written_;
    std::vector<Interval> intervals_;
};

}  // namespace

bool writesOverlap(const AUEglobals& record, const std::vector<Notes::Access>& accesses) {
    HostMemory memory(accesses);
    const auto nSteps = static_cast<std::size_t>(std::max(record.nSteps, 0));
    for (const SeriesKind& kind : kSeries) {
        // The engine's own from the potentials on.
        if (kind.count == &AUEglobals::nPotComps) break;
        memory.addSeries(record.*kind.table, record.*kind.count, nSteps);
    }
    memory.addSeries(record.FreqSer, record.nFreqSer, kKinds * nSteps);
    memory.addTable(record.Net_Compnt, record.nComps);
    memory.addTable(record.Net_Conn, record.nConns);
    memory.addTable(record.TechSpecs, record.nTechSpecs);
    memory.addTable(record.PotCompIds, record.nPotComps);
    memory.addTable(record.Splits, record.nSplits);
    for (std::int32_t i = 0; record.Splits && i < record.nSplits; ++i)
        memory.addTable(record.Splits[i].members, record.Splits[i].nMembers);
    memory.addTable(&record, 1);
    return memory.writesOverlap();
}
