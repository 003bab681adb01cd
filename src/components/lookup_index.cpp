#include "components/lookup_index.h"

#include "components.h"

namespace {

// A key that is not a number is equal to none and would spoil the order.
bool isNumber(float value) {
    return value == value;
}

// The potentials all carry the same ids and share one part of the index.
std::size_t partOf(Series kind) {
    return static_cast<std::size_t>(std::min(kind, Series::NrgPot));
}

// Ids of a table. A host may leave a table that nobody uses null, whatever it counts.
template <typename Entry>
Positions<std::int32_t> idsOf(const Entry* table, std::int32_t count) {
    Positions<std::int32_t> positions;
    for (std::int32_t i = 0; table && i < count; ++i)
        positions.add(table[i].id, i);
    positions.sort();
    return positions;
}

}  // namespace

LookupIndex::LookupIndex(const AUEglobals* Globals, const std::vector<std::int32_t>& CompntId,
                         const RCVTOLEAFS& Receivers)
    : frequencies(idsOf(Globals->FreqSer, Globals->nFreqSer)),
      logs(idsOf(Globals->Logs, Globals->nLogs)),
      waterBodies(idsOf(Globals->WatBod, Globals->nWatBod)),
      splits(idsOf(Globals->Splits, Globals->nSplits)),
      receivers(idsOf(Receivers.data(), static_cast<std::int32_t>(Receivers.size()))) {
    for (std::int32_t i = 0; i < Globals->nComps; ++i) {
        const ComponentRow& row = Globals->Net_Compnt[i];
        if (isNumber(row.id)) rows.add(row.id, i);
        if (isReservoir(row) && isNumber(row.key)) reservoirs.add(row.key, i);
    }
    rows.sort();
    reservoirs.sort();
    for (std::int32_t i = 0; Globals->TechSpecs && i < Globals->nTechSpecs; ++i) {
        const SpecificationRow& row = Globals->TechSpecs[i];
        if (!isSelected(row) || !isNumber(row.brand) || !isNumber(row.number)) continue;
        specifications.add({row.brand, row.number}, i);
    }
    specifications.sort();
    for (std::size_t kind = 0; kind <= partOf(Series::NrgPot); ++kind) {
        series.push_back(idsOf(Globals->*kSeries[kind].table, Globals->*kSeries[kind].count));
    }
    for (std::size_t i = 0; i < CompntId.size(); ++i)
        sequence.add(CompntId[i], static_cast<std::int32_t>(i));
    sequence.sort();
}

const Positions<std::int32_t>& LookupIndex::ofKind(Series kind) const {
    return series[partOf(kind)];
}
