// A handful of networks in one process, each run and freed: what valgrind's memcheck is to look at.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "host_record.h"
#include "networks.h"
#include "random_model.h"

namespace {

// Goes through every value, so that one which was never set is noticed.
int zeros(const AUEglobals& record) {
    int count = 0;
    forEachResult(record, [&](const Result& result) {
        for (std::size_t k = 0; k < result.steps; ++k)
            count += result[k] == 0.0F;
    });
    return count;
}

void run(const char* name, const Model& model, std::int32_t expected) {
    HostRecord host(model);
    // Not by the host's own call, which compares its arrays with their padding.
    const std::int32_t status = KESTO_simul(&host.record(), 1, model.nSteps);
    const int count = status == KESTO_SUCCESS ? zeros(host.record()) : 0;
    std::printf("%s: %zu components, status %d %s, %d zeros\n", name, model.components.size(), status,
                host.record().ErrMsg, count);
    FreeAUEglobals(&host.record());
    if (status != expected) std::exit(1);
}

}  // namespace

int main() {
    run("everything", makeEverything(), KESTO_SUCCESS);
    run("daily", makeDaily(400), KESTO_SUCCESS);
    run("houses", makeHouses(20, 30), KESTO_SUCCESS);
    for (std::uint32_t seed = 1; seed <= 12; ++seed)
        run("random", makeRandomModel({}, seededDice(seed)).model, KESTO_SUCCESS);
    // Ways out of set-up and of the time loop.
    Model broken = makeEverything();
    broken.components.back().techid = 99.0F;
    run("unknown type", broken, KESTO_RUN_FAILURE);
    broken = makeEverything();
    broken.table(Table::Multpls).clear();
    run("no multipliers", broken, KESTO_SETUP_FAILURE);
}
