#include "components/lookup.h"

#include <limits>

#include "components.h"
#include "components/lookup_index.h"
#include "errors.h"

namespace {

// Of the call that is running; null between calls.
const LookupIndex* callIndex = nullptr;

// The first entry at or after `from` whose column holds the key; -1 without one.
template <typename Row, typename Key>
std::int32_t scan(const Row* table, std::int32_t count, Key Row::*column, Key key, std::int32_t from = 0) {
    for (std::int32_t i = from; i < count; ++i) {
        if (table[i].*column == key) return i;
    }
    return -1;
}

// Where the entry stands in its list, or -1 with the error reported.
std::int32_t positionOf(AUEglobals* Globals, Series kind, std::int32_t id) {
    const SeriesKind& series = kSeries[static_cast<int>(kind)];
    const std::int32_t position = callIndex
                                      ? callIndex->ofKind(kind).first(id)
                                      : scan(Globals->*series.table, Globals->*series.count, &SeriesEntry::id, id);
    if (position < 0) fail(Globals, text::kSeriesNotFound, series.name, id);
    return position;
}

}  // namespace

std::int32_t truncated(double value) {
    // The comparison is false for NaN as well.
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

std::int32_t nint(double value) {
    return truncated(value > 0.0 ? value + 0.5 : value - 0.5);
}

UseIndex::UseIndex(const LookupIndex* index) {
    callIndex = index;
}

UseIndex::~UseIndex() {
    callIndex = nullptr;
}

const ComponentRow* findRow(AUEglobals* Globals, std::int32_t id) {
    const auto wanted = static_cast<float>(id);
    const std::int32_t row = callIndex ? callIndex->rows.first(wanted)
                                       : scan(Globals->Net_Compnt, Globals->nComps, &ComponentRow::id, wanted);
    if (row >= 0) return &Globals->Net_Compnt[row];
    fail(Globals, text::kIdNotFound);
    return nullptr;
}

std::optional<float> findSpecification(AUEglobals* Globals, std::int32_t brand, int number, std::int32_t& from) {
    const std::pair wanted(static_cast<float>(brand), static_cast<float>(number));
    std::int32_t found = -1;
    if (callIndex) {
        found = callIndex->specifications.first(wanted, from);
    } else {
        for (std::int32_t i = from; i < Globals->nTechSpecs && found < 0; ++i) {
            const SpecificationRow& row = Globals->TechSpecs[i];
            if (isSelected(row) && std::pair(row.brand, row.number) == wanted) found = i;
        }
    }
    if (found < 0) {
        fail(Globals, text::kSpecificationNotFound, number, brand);
        return std::nullopt;
    }
    from = found;
    return Globals->TechSpecs[found].value;
}

std::optional<const float*> findMultiplier(AUEglobals* Globals, const InstInfo* Mult, std::int32_t id) {
    if (!Mult || Mult->nUniq() == 0) return nullptr;
    std::int32_t position = callIndex ? callIndex->sequence.first(id) : -1;
    for (std::size_t i = 0; !callIndex && position < 0 && i < Mult->CompntId.size(); ++i) {
        if (Mult->CompntId[i] == id) position = static_cast<std::int32_t>(i);
    }
    if (position < 0) {
        fail(Globals, text::kNotInSequence);
        return std::nullopt;
    }
    const std::int32_t sequence = Mult->SeqId[static_cast<std::size_t>(position)];
    if (sequence == -1) return nullptr;
    const auto index = static_cast<std::size_t>(sequence);
    if (index < Mult->TotNumComp.size() && Mult->TotNumComp[index].index == sequence) {
        return Mult->TotNumComp[index].Value.data();
    }
    fail(Globals, text::kMultiplierNotFound);
    return std::nullopt;
}

const float* findFrequencies(AUEglobals* Globals, std::int32_t group) {
    const std::int32_t position = callIndex ? callIndex->frequencies.first(group)
                                            : scan(Globals->FreqSer, Globals->nFreqSer, &SeriesEntry::id, group);
    if (position >= 0) return Globals->FreqSer[position].Value;
    fail(Globals, text::kFrequencyNotFound);
    return nullptr;
}

std::int32_t findSplit(const AUEglobals* Globals, std::int32_t id, std::int32_t from) {
    return callIndex ? callIndex->splits.first(id, from)
                     : scan(Globals->Splits, Globals->nSplits, &SplitEntry::id, id, from);
}

float* findSeries(AUEglobals* Globals, Series kind, std::int32_t id) {
    const SeriesKind& series = kSeries[static_cast<int>(kind)];
    const std::int32_t position = positionOf(Globals, kind, id);
    return position < 0 ? nullptr : (Globals->*series.table)[position].Value;
}

float* writableSeries(AUEglobals* Globals, Series kind, std::int32_t id) {
    const SeriesKind& series = kSeries[static_cast<int>(kind)];
    const std::int32_t position = positionOf(Globals, kind, id);
    if (position < 0) return nullptr;
    if (position < Globals->*series.count) return (Globals->*series.table)[position].Value;
    fail(Globals, text::kIndexBeyond, series.name);
    return nullptr;
}

Signal* findRecord(AUEglobals* Globals, Record kind, std::int32_t id) {
    const bool isLog = kind == Record::Logs;
    const SignalSeriesEntry* const table = isLog ? Globals->Logs : Globals->WatBod;
    const std::int32_t count = isLog ? Globals->nLogs : Globals->nWatBod;
    const std::int32_t position = callIndex ? (isLog ? callIndex->logs : callIndex->waterBodies).first(id)
                                            : scan(table, count, &SignalSeriesEntry::id, id);
    if (position >= 0) return table[position].Signal;
    fail(Globals, text::kRecordNotFound, isLog ? "Logs" : "WatBod");
    return nullptr;
}

const ComponentRow* findReservoir(const AUEglobals* Globals, const ComponentRow* component, const ComponentRow* after) {
    const auto key = static_cast<float>(nint(component->key));
    const auto from = after ? static_cast<std::int32_t>(after - Globals->Net_Compnt) + 1 : 0;
    if (callIndex) {
        const std::int32_t found = callIndex->reservoirs.first(key, from);
        return found < 0 ? nullptr : &Globals->Net_Compnt[found];
    }
    for (std::int32_t i = from; i < Globals->nComps; ++i) {
        const ComponentRow& row = Globals->Net_Compnt[i];
        if (isReservoir(row) && row.key == key) return &row;
    }
    return nullptr;
}

const Receiver* findReceiver(const RCVTOLEAFS& Receivers, std::int32_t id) {
    if (callIndex) {
        const std::int32_t position = callIndex->receivers.first(id);
        return position < 0 ? nullptr : &Receivers[static_cast<std::size_t>(position)];
    }
    const auto receiver =
        std::find_if(Receivers.begin(), Receivers.end(), [&](const Receiver& entry) { return entry.id == id; });
    return receiver == Receivers.end() ? nullptr : &*receiver;
}

bool isInside(const AUEglobals* Globals, std::int32_t step) {
    return step >= 0 && step < Globals->nSteps;
}

bool checkStep(AUEglobals* Globals, std::int32_t step, std::int32_t id) {
    if (isInside(Globals, step)) return true;
    fail(Globals, text::kStepOutside, Globals->CurStep, id);
    return false;
}
