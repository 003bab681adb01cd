#include "components/lookup.h"

#include <algorithm>

#include "components/type_codes.h"
#include "errors.h"

namespace {

constexpr float kNoKey = std::numeric_limits<float>::quiet_NaN();

std::size_t finderOf(Series kind) {
    return static_cast<std::size_t>(std::min(kind, Series::NrgPot));
}

// A host may leave the values of a series null when it has no steps. Else that is reported.
bool hasValues(AUEglobals* Globals, const SeriesEntry& entry, const char* kind) {
    if (entry.Value || Globals->nSteps <= 0) return true;
    fail(Globals, text::kNoValues, kind, entry.id);
    return false;
}

// The entry of an id, with values; null with the error reported.
const SeriesEntry* findEntry(AUEglobals* Globals, Series kind, const SeriesFinder& finder, std::int32_t id) {
    const SeriesKind& series = kSeries[static_cast<int>(kind)];
    const std::int32_t position = finder.first(id);
    if (position < 0) {
        fail(Globals, text::kSeriesNotFound, series.name, id);
        return nullptr;
    }
    const SeriesEntry& entry = (Globals->*series.table)[position];
    return hasValues(Globals, entry, series.name) ? &entry : nullptr;
}

}  // namespace

std::optional<float*> findSeries(AUEglobals* Globals, Series kind, const SeriesFinder& finder, std::int32_t id) {
    const SeriesEntry* const entry = findEntry(Globals, kind, finder, id);
    return entry ? std::optional(entry->Value) : std::nullopt;
}

float Lookups::reservoirKey(const ComponentRow& row) {
    return row.techid == static_cast<float>(code::kReservoir) ? row.key : kNoKey;
}

std::pair<float, float> Lookups::specificationKey(const SpecificationRow& row) {
    const bool isSelected = row.select1 == 1.0F && row.select2 == 1.0F;
    return {isSelected ? row.brand : kNoKey, row.number};
}

Lookups::Lookups(AUEglobals* Globals, const InstInfo* Mult, const RCVTOLEAFS* Receivers, By by)
    : Globals_(Globals), Mult_(Mult), Receivers_(Receivers) {
    const bool mayIndex = by == By::Index;
    rows_ = {Globals->Net_Compnt, Globals->nComps, mayIndex};
    reservoirs_ = {Globals->Net_Compnt, Globals->nComps, mayIndex};
    specifications_ = {Globals->TechSpecs, Globals->nTechSpecs, mayIndex};
    for (std::size_t kind = 0; kind <= finderOf(Series::NrgPot); ++kind)
        series_.emplace_back(Globals->*kSeries[kind].table, Globals->*kSeries[kind].count, mayIndex);
    frequencies_ = {Globals->FreqSer, Globals->nFreqSer, mayIndex};
    logs_ = {Globals->Logs, Globals->nLogs, mayIndex};
    waterBodies_ = {Globals->WatBod, Globals->nWatBod, mayIndex};
    splits_ = {Globals->Splits, Globals->nSplits, mayIndex};
    if (Mult) sequence_ = {Mult->CompntId.data(), static_cast<std::int32_t>(Mult->CompntId.size())};
    if (Receivers) receivers_ = {Receivers->data(), static_cast<std::int32_t>(Receivers->size())};
}

const SeriesFinder& Lookups::ofKind(Series kind) const {
    return series_[finderOf(kind)];
}

const ComponentRow* Lookups::findRow(std::int32_t id) const {
    const std::int32_t row = rows_.first(static_cast<float>(id));
    if (row >= 0) return &Globals_->Net_Compnt[row];
    fail(Globals_, text::kIdNotFound);
    return nullptr;
}

std::optional<float> Lookups::findSpecification(std::int32_t brand, int number, std::int32_t& from) const {
    const std::int32_t row = specifications_.first({static_cast<float>(brand), static_cast<float>(number)}, from);
    if (row < 0) {
        fail(Globals_, text::kSpecificationNotFound, number, brand);
        return std::nullopt;
    }
    from = row;
    return Globals_->TechSpecs[row].value;
}

std::optional<const float*> Lookups::findMultiplier(std::int32_t id) const {
    if (!Mult_ || Mult_->nUniq() == 0) return nullptr;
    const std::int32_t position = sequence_.first(id);
    if (position < 0) {
        fail(Globals_, text::kNotInSequence);
        return std::nullopt;
    }
    const std::int32_t sequence = Mult_->SeqId[static_cast<std::size_t>(position)];
    if (sequence == -1) return nullptr;
    const auto index = static_cast<std::size_t>(sequence);
    if (index < Mult_->TotNumComp.size() && Mult_->TotNumComp[index].index == sequence) {
        return Mult_->TotNumComp[index].Value.data();
    }
    fail(Globals_, text::kMultiplierNotFound);
    return std::nullopt;
}

std::optional<const float*> Lookups::findFrequencies(std::int32_t group) const {
    const std::int32_t position = frequencies_.first(group);
    if (position < 0) {
        fail(Globals_, text::kFrequencyNotFound);
        return std::nullopt;
    }
    const SeriesEntry& entry = Globals_->FreqSer[position];
    return hasValues(Globals_, entry, "FreqSer") ? std::optional<const float*>(entry.Value) : std::nullopt;
}

std::optional<float*> Lookups::findSeries(Series kind, std::int32_t id) const {
    return ::findSeries(Globals_, kind, ofKind(kind), id);
}

std::optional<float*> Lookups::writableSeries(Series kind, std::int32_t id) const {
    const SeriesEntry* const entry = findEntry(Globals_, kind, ofKind(kind), id);
    if (!entry) return std::nullopt;
    const SeriesKind& series = kSeries[static_cast<int>(kind)];
    if (entry - Globals_->*series.table < Globals_->*series.count) return entry->Value;
    fail(Globals_, text::kIndexBeyond, series.name);
    return std::nullopt;
}

Signal* Lookups::findRecord(Record kind, std::int32_t id) const {
    const bool isLog = kind == Record::Logs;
    const char* const name = isLog ? "Logs" : "WatBod";
    const std::int32_t position = (isLog ? logs_ : waterBodies_).first(id);
    if (position < 0) {
        fail(Globals_, text::kRecordNotFound, name);
        return nullptr;
    }
    if (position < (isLog ? Globals_->nLogs : Globals_->nWatBod))
        return (isLog ? Globals_->Logs : Globals_->WatBod)[position].Signal;
    fail(Globals_, text::kIndexBeyond, name);
    return nullptr;
}

const ComponentRow* Lookups::findReservoir(const ComponentRow* component, const ComponentRow* after) const {
    const auto from = after ? static_cast<std::int32_t>(after - Globals_->Net_Compnt) + 1 : 0;
    const std::int32_t row = reservoirs_.first(static_cast<float>(nint(component->key)), from);
    return row < 0 ? nullptr : &Globals_->Net_Compnt[row];
}

const Receiver* Lookups::findReceiver(std::int32_t id) const {
    const std::int32_t position = receivers_.first(id);
    return position < 0 ? nullptr : &(*Receivers_)[static_cast<std::size_t>(position)];
}

bool checkStep(AUEglobals* Globals, std::int32_t step, std::int32_t id) {
    if (isInside(Globals, step)) return true;
    fail(Globals, text::kStepOutside, Globals->CurStep, id);
    return false;
}
