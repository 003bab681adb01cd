// run_network FILE       Runs one call of the library in this process and prints all that it left: status, error, step,
//                        output tables and states, each float as its bits. Any NaN is "nan": its sign and payload are
//                        the processor's affair.

#include <bit>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>

#include "host_record.h"
#include "network_file.h"

namespace {

void print(float value) {
    if (std::isnan(value)) {
        std::fputs(" nan", stdout);
    } else {
        std::printf(" %08x", std::bit_cast<unsigned>(value));
    }
}

void print(const char* name, std::size_t entry, const SeriesEntry& series, std::int32_t steps) {
    std::printf("%s %zu %d:", name, entry, series.id);
    for (std::int32_t k = 0; k < steps; ++k)
        print(series.Value[k]);
    std::printf("\n");
}

void print(const char* name, const SignalSeriesEntry* table, std::int32_t count, std::int32_t steps) {
    for (std::int32_t i = 0; i < count; ++i) {
        std::printf("%s %d %d:", name, i, table[i].id);
        for (std::int32_t k = 0; k < steps; ++k) {
            print(table[i].Signal[k].quantity);
            print(table[i].Signal[k].quality);
        }
        std::printf("\n");
    }
}

void printOutputs(const AUEglobals& record) {
    if (record.Logs != nullptr) print("Logs", record.Logs, record.nLogs, record.nSteps);
    if (record.WatBod != nullptr) print("WatBod", record.WatBod, record.nWatBod, record.nSteps);
    for (const std::string_view name : kPotentialNames) {
        const SeriesEntry* const table = potentialTable(record, name);
        for (std::int32_t i = 0; table != nullptr && i < record.nPotComps; ++i)
            print(name.data(), static_cast<std::size_t>(i), table[i], record.nSteps);
    }
}

void run(const NetworkCall& call) {
    HostRecord host(call.model);
    std::printf("status %d\n", host.run(call.first, call.last));
    const AUEglobals& record = host.record();
    std::printf("ErrFlag %d\nErrMsg %s\nCurStep %d\n", record.ErrFlag, record.ErrMsg, record.CurStep);
    std::printf("damage %s\n", host.damage().c_str());
    printOutputs(record);
    for (const Table state : {Table::WatQuant, Table::WatQual}) {
        const SeriesEntry* const table = host.entries(state);
        for (std::size_t i = 0; i < call.model.table(state).size(); ++i)
            print(kTableNames[static_cast<std::size_t>(state)].data(), i, table[i], record.nSteps);
    }
    host.free();
    std::printf("damage by freeing %s\n", host.damage().c_str());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: run_network FILE\n");
        return 2;
    }
    try {
        std::ifstream file(argv[1]);
        run(readNetworkCall(file));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", argv[1], e.what());
        return 2;
    }
    return 0;
}
