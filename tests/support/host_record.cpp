#include "host_record.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace {

template <class T>
std::int32_t size(const std::vector<T>& values) {
    return static_cast<std::int32_t>(values.size());
}

// The record as a host's own bytes: what the library may write is blanked.
AUEglobals hostPart(const AUEglobals& record) {
    AUEglobals part;
    std::memcpy(&part, &record, sizeof part);
    part.CurStep = 0;
    std::memset(reinterpret_cast<char*>(&part) + offsetof(AUEglobals, Logs), 0,
                sizeof part - offsetof(AUEglobals, Logs));
    return part;
}

}  // namespace

HostRecord::HostRecord(const Model& model) {
    record_.StartTime = model.StartTime;
    record_.nSteps = model.nSteps;
    record_.TimeStep = model.TimeStep;
    record_.Latitude = model.Latitude;
    record_.StopOnInfeas = model.StopOnInfeas;
    record_.BuildTree = model.BuildTree;
    record_.CurStep = -77;  // no value that a run leaves
    record_.PotCompIds = memory_.put(model.pots, "PotCompIds");
    record_.nPotComps = size(model.pots);
    record_.TechSpecs = memory_.put(model.specifications, "TechSpecs");
    record_.nTechSpecs = size(model.specifications);
    record_.Net_Compnt = memory_.put(model.components, "Net_Compnt");
    record_.nComps = size(model.components);
    record_.Net_Conn = memory_.put(model.connections, "Net_Conn");
    record_.nConns = size(model.connections);
    for (std::size_t i = 0; i < kTables.size(); ++i)
        fillSeries(static_cast<Table>(i), model);
    std::vector<SplitEntry> splits;
    for (const Split& split : model.splits)
        splits.push_back({split.id, size(split.members), memory_.put(split.members, "members"), split.beta});
    record_.Splits = memory_.put(splits, "Splits");
    record_.nSplits = size(splits);
}

void HostRecord::overlap(const Overlap& overlap) {
    SeriesEntry& one = entries(overlap.table)[overlap.entry];
    SeriesEntry& other = entries(overlap.other)[overlap.otherEntry];
    const std::ptrdiff_t length = std::ptrdiff_t{record_.nSteps} * (overlap.other == Table::FreqSer ? kAppliances : 1);
    std::vector<float> values(other.Value, other.Value + length);
    values.insert(values.end(), one.Value + record_.nSteps - overlap.elements, one.Value + record_.nSteps);
    other.Value = memory_.put(values, "overlap", true);
    one.Value = other.Value + overlap.elements;
}

void HostRecord::fillSeries(Table which, const Model& model) {
    const std::string name(kTables[static_cast<std::size_t>(which)].name);
    const bool state = which == Table::WatQuant || which == Table::WatQual;
    std::vector<SeriesEntry> table;
    for (const NamedSeries& series : model.table(which))
        table.push_back({series.id, memory_.put(series.values, name + " " + std::to_string(series.id), state)});
    entries(which) = memory_.put(table, name);
    count(which) = size(table);
}

std::int32_t HostRecord::run(std::int32_t first, std::int32_t last) {
    AUEglobals before;
    std::memcpy(&before, &record_, sizeof before);
    memory_.close();
    std::int32_t status = 0;
    std::exception_ptr thrown;
    try {
        status = KESTO_simul(&record_, first, last);
    } catch (...) {
        thrown = std::current_exception();
    }
    damage_ = memory_.open();
    checkRecord(before, false);
    if (thrown) std::rethrow_exception(thrown);
    return status;
}

void HostRecord::free() {
    AUEglobals before;
    std::memcpy(&before, &record_, sizeof before);
    memory_.close();
    FreeAUEglobals(&record_);
    damage_ = memory_.open();
    checkRecord(before, true);
}

void HostRecord::checkRecord(const AUEglobals& before, bool freed) {
    const AUEglobals was = hostPart(before);
    const AUEglobals is = hostPart(record_);
    if (std::memcmp(&was, &is, sizeof was) != 0) damage_ += "the record: a field of the host's changed\n";
    if (std::memchr(record_.ErrMsg, 0, sizeof record_.ErrMsg) == nullptr) damage_ += "ErrMsg: not terminated\n";
    if (!freed) return;
    if (before.nLogs != record_.nLogs || before.nWatBod != record_.nWatBod) damage_ += "counts: changed by freeing\n";
    if (before.CurStep != record_.CurStep || before.ErrFlag != record_.ErrFlag ||
        std::memcmp(before.ErrMsg, record_.ErrMsg, sizeof before.ErrMsg) != 0)
        damage_ += "CurStep, ErrFlag or ErrMsg: changed by freeing\n";
}

SeriesEntry* HostRecord::findEntry(Table which, std::int32_t id) {
    SeriesEntry* table = entries(which);
    for (std::int32_t i = 0; i < count(which); ++i)
        if (table[i].id == id) return table + i;
    return nullptr;
}

float* HostRecord::find(Table which, std::int32_t id) {
    const SeriesEntry* const entry = findEntry(which, id);
    return entry ? entry->Value : nullptr;
}

void forEachResult(const AUEglobals& record, const std::function<void(const Result&)>& visit) {
    const auto steps = static_cast<std::size_t>(std::max(record.nSteps, 0));
    const auto series = [&](std::string_view name, const SeriesEntry* table, std::int32_t count) {
        for (std::int32_t i = 0; table && i < count; ++i)
            if (table[i].Value) visit({name, i, table[i].id, table[i].Value, 1, steps});
    };
    const auto signals = [&](std::string_view quantity, std::string_view quality, const SignalSeriesEntry* table,
                             std::int32_t count) {
        for (std::int32_t i = 0; table && i < count; ++i) {
            if (!table[i].Signal) continue;
            visit({quantity, i, table[i].id, &table[i].Signal->quantity, 2, steps});
            visit({quality, i, table[i].id, &table[i].Signal->quality, 2, steps});
        }
    };
    signals("Logs quantity", "Logs quality", record.Logs, record.nLogs);
    signals("WatBod quantity", "WatBod quality", record.WatBod, record.nWatBod);
    for (const auto& [name, entries] : kPotentialTables)
        series(name, record.*entries, record.nPotComps);
    series("WatQuant", record.WatQuant, record.nWatQuant);
    series("WatQual", record.WatQual, record.nWatQual);
}
