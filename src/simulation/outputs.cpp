// The output tables of the record: recorded signals and potentials. They belong to the library, live until the host
// drops them with FreeAUEglobals, and are zero wherever no step has run.
//
// Each series is an allocation of its own, so that a host may sort a table's entries, or keep a series beyond the
// table by setting its entry to null.

#include <cstdlib>

#include "components/lookup.h"
#include "components/type_codes.h"
#include "errors.h"
#include "simulation.h"

namespace {

// Zeroed memory that FreeAUEglobals can free; null when there is none, as for a negative count. Never null for zero.
template <typename T>
T* allocate(std::int32_t count) {
    if (count < 0) return nullptr;
    return static_cast<T*>(std::calloc(count > 0 ? static_cast<std::size_t>(count) : 1, sizeof(T)));
}

// Gives each entry of a table its series. False when there is no memory for some; those have none.
template <typename Entry, typename T>
bool allocateSeries(Entry* table, std::int32_t entries, T* Entry::*series, std::int32_t nSteps) {
    bool isComplete = true;
    for (std::int32_t i = 0; i < entries; ++i) {
        table[i].*series = allocate<T>(nSteps);
        isComplete = isComplete && table[i].*series;
    }
    return isComplete;
}

// The recorder tables: which types have an entry, in which order. A type code with a fraction has none.
struct RecorderTable {
    SignalSeriesEntry* AUEglobals::*table;
    std::int32_t AUEglobals::*count;
    const char* tableName;
    const char* seriesName;
};
constexpr RecorderTable kLogs{&AUEglobals::Logs, &AUEglobals::nLogs, "Globals->Logs", "Globals->Logs[i].Signal"};
constexpr RecorderTable kWatBod{&AUEglobals::WatBod, &AUEglobals::nWatBod, "Globals->WatBod",
                                "Globals->WatBod[i].Signal"};

void allocateRecorders(AUEglobals* Globals, const RecorderTable& recorders, std::initializer_list<std::int32_t> types) {
    SignalSeriesEntry*& table = Globals->*recorders.table;
    std::int32_t& count = Globals->*recorders.count;
    table = nullptr;
    count = 0;
    const auto forEach = [&](const auto& visit) {
        for (const std::int32_t type : types) {
            for (std::int32_t i = 0; i < Globals->nComps; ++i) {
                if (Globals->Net_Compnt[i].techid == static_cast<float>(type)) visit(Globals->Net_Compnt[i]);
            }
        }
    };
    std::int32_t entries = 0;
    forEach([&](const ComponentRow&) { ++entries; });
    if (entries == 0) return;
    table = allocate<SignalSeriesEntry>(entries);
    if (!table) return fail(Globals, text::kNoMemory, recorders.tableName);
    forEach([&](const ComponentRow& row) { table[count++].id = nint(row.id); });
    if (!allocateSeries(table, entries, &SignalSeriesEntry::Signal, Globals->nSteps))
        fail(Globals, text::kNoMemory, recorders.seriesName);
}

struct PotentialTable {
    SeriesEntry* AUEglobals::*table;
    const char* tableName;
    const char* seriesName;
};
// In order of allocation, which differs from the order of release in one place.
constexpr PotentialTable kPotentials[] = {
    {&AUEglobals::NrgPot, "Globals->NrgPot", "Globals->NrgPot[i].Value"},
    {&AUEglobals::InfPot, "Globals->InfPot", "Globals->InfPot[i].Value"},
    {&AUEglobals::LosPot, "Globals->LosPot", "Globals->LosPot[i].Value"},
    {&AUEglobals::EvaPot, "Globals->EvaPot", "Globals->EvaPot[i].Value"},
    {&AUEglobals::CapPot, "Globals->CapPot", "Globals->CapPot[i].Value"},
    {&AUEglobals::OprPot, "Globals->OprPot", "Globals->OprPot[i].Value"},
};

void allocatePotentials(AUEglobals* Globals) {
    for (const PotentialTable& potential : kPotentials) {
        Globals->*potential.table = allocate<SeriesEntry>(Globals->nPotComps);
        if (!(Globals->*potential.table)) fail(Globals, text::kNoMemory, potential.tableName);
    }
    if (Globals->ErrFlag == 1 || Globals->nPotComps == 0) return;
    for (const PotentialTable& potential : kPotentials) {
        SeriesEntry* const table = Globals->*potential.table;
        for (std::int32_t k = 0; k < Globals->nPotComps; ++k)
            table[k].id = Globals->PotCompIds[k];
        if (!allocateSeries(table, Globals->nPotComps, &SeriesEntry::Value, Globals->nSteps))
            fail(Globals, text::kNoMemory, potential.seriesName);
    }
}

template <typename Entry, typename T>
void freeTable(Entry*& table, std::int32_t entries, T* Entry::*series) {
    for (std::int32_t i = 0; table && i < entries; ++i)
        std::free(table[i].*series);
    std::free(table);
    table = nullptr;
}

}  // namespace

void AllocOuts(AUEglobals* Globals) {
    allocateRecorders(Globals, kLogs, {code::kLogger, code::kDelay, code::kQuotaLimiter});
    allocateRecorders(Globals, kWatBod, {code::kWaterBody});
    allocatePotentials(Globals);
}

void FreeAUEglobals(AUEglobals* Globals) {
    freeTable(Globals->Logs, Globals->nLogs, &SignalSeriesEntry::Signal);
    freeTable(Globals->WatBod, Globals->nWatBod, &SignalSeriesEntry::Signal);
    for (SeriesEntry* AUEglobals::*table : {&AUEglobals::NrgPot, &AUEglobals::InfPot, &AUEglobals::EvaPot,
                                            &AUEglobals::LosPot, &AUEglobals::CapPot, &AUEglobals::OprPot}) {
        freeTable(Globals->*table, Globals->nPotComps, &SeriesEntry::Value);
    }
}
