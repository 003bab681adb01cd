// Preloaded into a host (LD_PRELOAD), it writes each call of KESTO_simul as a file before the library runs it:
// KESTO_RECORD_FOLDER/1.network, 2.network and so on. Thus the models of the examples reach other builds of the
// library.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "network_file.h"

namespace {

template <class T>
std::vector<T> copy(const T* values, std::int32_t count) {
    return values == nullptr ? std::vector<T>{} : std::vector<T>(values, values + count);
}

std::vector<NamedSeries> copy(const SeriesEntry* table, std::int32_t count, std::int32_t values) {
    std::vector<NamedSeries> copies;
    for (std::int32_t i = 0; table != nullptr && i < count; ++i)
        copies.push_back({table[i].id, copy(table[i].Value, values)});
    return copies;
}

RandomModel callOf(const AUEglobals& record, std::int32_t first, std::int32_t last) {
    RandomModel call{{}, {}, {{first, last}}};
    Model& model = call.model;
    model.StartTime = record.StartTime;
    model.nSteps = record.nSteps;
    model.TimeStep = record.TimeStep;
    model.Latitude = record.Latitude;
    model.StopOnInfeas = record.StopOnInfeas;
    model.BuildTree = record.BuildTree;
    model.pots = copy(record.PotCompIds, record.nPotComps);
    model.specifications = copy(record.TechSpecs, record.nTechSpecs);
    model.components = copy(record.Net_Compnt, record.nComps);
    model.connections = copy(record.Net_Conn, record.nConns);
    for (std::size_t i = 0; i < kTables.size(); ++i) {
        const bool isOfUses = static_cast<Table>(i) == Table::FreqSer;
        model.series[i] =
            copy(record.*kTables[i].entries, record.*kTables[i].count, record.nSteps * (isOfUses ? kAppliances : 1));
    }
    for (std::int32_t i = 0; record.Splits != nullptr && i < record.nSplits; ++i) {
        const SplitEntry& split = record.Splits[i];
        model.splits.push_back({split.id, copy(split.members, split.nMembers), split.beta});
    }
    return call;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) std::int32_t KESTO_simul(AUEglobals* Globals, std::int32_t first,
                                                                           std::int32_t last) {
    static int calls = 0;
    const char* const folder = std::getenv("KESTO_RECORD_FOLDER");
    using Simulate = std::int32_t (*)(AUEglobals*, std::int32_t, std::int32_t);
    const auto next = reinterpret_cast<Simulate>(dlsym(RTLD_NEXT, "KESTO_simul"));
    if (folder == nullptr || next == nullptr) std::abort();
    std::ofstream file(std::string(folder) + "/" + std::to_string(++calls) + ".network");
    write(file, callOf(*Globals, first, last));
    if (!file.flush()) std::abort();
    return next(Globals, first, last);
}
