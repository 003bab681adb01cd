// The output tables of the record: recorded signals and potentials. They belong to the library, live until the host
// drops them with FreeAUEglobals, and are zero wherever no step has run.

#include <cstdlib>

#include "components/lookup.h"
#include "errors.h"
#include "simulation.h"

namespace {

// Zeroed memory that FreeAUEglobals can free; null when there is none, as for a negative count. Never null for zero.
template <typename T>
T* allocate(std::int32_t count) {
    if (count < 0) return nullptr;
    return static_cast<T*>(std::calloc(count > 0 ? static_cast<std::size_t>(count) : 1, sizeof(T)));
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

void allocateRecorders(AUEglobals* Globals, const RecorderTable& recorders, std::initializer_list<float> types) {
    SignalSeriesEntry*& table = Globals->*recorders.table;
    std::int32_t& count = Globals->*recorders.count;
    table = nullptr;
    count = 0;
    const auto forEach = [&](const auto& visit) {
        for (const float type : types) {
            for (std::int32_t i = 0; i < Globals->nComps; ++i) {
                if (Globals->Net_Compnt[i].techid == type) visit(Globals->Net_Compnt[i]);
            }
        }
    };
    std::int32_t entries = 0;
    forEach([&](const ComponentRow&) { ++entries; });
    if (entries == 0) return;
    table = allocate<SignalSeriesEntry>(entries);
    if (!table) return fail(Globals, text::kNoMemory, recorders.tableName);
    forEach([&](const ComponentRow& row) {
        SignalSeriesEntry& entry = table[count++];
        entry.id = nint(row.id);
        entry.Signal = allocate<Signal>(Globals->nSteps);
        if (!entry.Signal) fail(Globals, text::kNoMemory, recorders.seriesName);
    });
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
    if (Globals->ErrFlag == 1) return;
    for (const PotentialTable& potential : kPotentials) {
        for (std::int32_t k = 0; k < Globals->nPotComps; ++k) {
            SeriesEntry& entry = (Globals->*potential.table)[k];
            entry.id = Globals->PotCompIds[k];
            entry.Value = allocate<float>(Globals->nSteps);
            if (!entry.Value) fail(Globals, text::kNoMemory, potential.seriesName);
        }
    }
}

void freeRecorders(SignalSeriesEntry*& table, std::int32_t count) {
    for (std::int32_t i = 0; table && i < count; ++i)
        std::free(table[i].Signal);
    std::free(table);
    table = nullptr;
}

void freePotentials(SeriesEntry*& table, std::int32_t count) {
    for (std::int32_t i = 0; table && i < count; ++i)
        std::free(table[i].Value);
    std::free(table);
    table = nullptr;
}

}  // namespace

void AllocOuts(AUEglobals* Globals) {
    allocateRecorders(Globals, kLogs, {26.0F, 51.0F, 64.0F});
    allocateRecorders(Globals, kWatBod, {43.0F});
    allocatePotentials(Globals);
}

void FreeAUEglobals(AUEglobals* Globals) {
    freeRecorders(Globals->Logs, Globals->nLogs);
    freeRecorders(Globals->WatBod, Globals->nWatBod);
    for (SeriesEntry* AUEglobals::*table : {&AUEglobals::NrgPot, &AUEglobals::InfPot, &AUEglobals::EvaPot,
                                            &AUEglobals::LosPot, &AUEglobals::CapPot, &AUEglobals::OprPot}) {
        freePotentials(Globals->*table, Globals->nPotComps);
    }
}
