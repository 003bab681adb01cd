#include "host_record.h"

#include <cstring>

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
    for (std::size_t i = 0; i < kTableNames.size(); ++i)
        fillSeries(static_cast<Table>(i), model);
    std::vector<SplitEntry> splits;
    for (const Split& split : model.splits)
        splits.push_back({split.id, size(split.members), memory_.put(split.members, "members"), split.beta});
    record_.Splits = memory_.put(splits, "Splits");
    record_.nSplits = size(splits);
}

void HostRecord::fillSeries(Table which, const Model& model) {
    const std::string name(kTableNames[static_cast<std::size_t>(which)]);
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
    const std::int32_t status = KESTO_simul(&record_, first, last);
    damage_ = memory_.open();
    checkRecord(before, false);
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

SeriesEntry*& HostRecord::entries(Table which) {
    switch (which) {
        case Table::FreqSer:
            return record_.FreqSer;
        case Table::Rainfall:
            return record_.Rainfall;
        case Table::Temp:
            return record_.Temp;
        case Table::Tmin:
            return record_.Tmin;
        case Table::Tmax:
            return record_.Tmax;
        case Table::Wind:
            return record_.Wind;
        case Table::Multpls:
            return record_.Multpls;
        case Table::Threshold:
            return record_.Threshold;
        case Table::Occup:
            return record_.Occup;
        case Table::Dmdflct:
            return record_.Dmdflct;
        case Table::InsDmd:
            return record_.InsDmd;
        case Table::WatQuant:
            return record_.WatQuant;
        case Table::WatQual:
            break;
    }
    return record_.WatQual;
}

std::int32_t& HostRecord::count(Table which) {
    switch (which) {
        case Table::FreqSer:
            return record_.nFreqSer;
        case Table::Rainfall:
            return record_.nRainfall;
        case Table::Temp:
            return record_.nTemp;
        case Table::Tmin:
            return record_.nTmin;
        case Table::Tmax:
            return record_.nTmax;
        case Table::Wind:
            return record_.nWind;
        case Table::Multpls:
            return record_.nMultpls;
        case Table::Threshold:
            return record_.nThreshold;
        case Table::Occup:
            return record_.nOccup;
        case Table::Dmdflct:
            return record_.nDmdflct;
        case Table::InsDmd:
            return record_.nInsDmd;
        case Table::WatQuant:
            return record_.nWatQuant;
        case Table::WatQual:
            break;
    }
    return record_.nWatQual;
}

float* HostRecord::find(Table which, std::int32_t id) {
    SeriesEntry* table = entries(which);
    for (std::int32_t i = 0; i < count(which); ++i)
        if (table[i].id == id) return table[i].Value;
    return nullptr;
}

SeriesEntry* potentialTable(const AUEglobals& record, std::string_view name) {
    SeriesEntry* const tables[] = {record.NrgPot, record.InfPot, record.LosPot,
                                   record.EvaPot, record.CapPot, record.OprPot};
    for (std::size_t i = 0; i < kPotentialNames.size(); ++i)
        if (kPotentialNames[i] == name) return tables[i];
    return nullptr;
}
