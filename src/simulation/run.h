// What lives for one call, and the set-up that makes it.
#ifndef KESTO_SIMULATION_RUN_H
#define KESTO_SIMULATION_RUN_H

#include <optional>

#include "components/lookup.h"
#include "simulation.h"

struct Run {
    CRossSignal signals;
    CRossConnection connections;
    InstInfo instInfo;
    RCVTOLEAFS receivers;
    std::optional<Lookups> lookups;
    bool statesLieInTables = false;  // so that a look-up may find something else in each step
};

// All stages of set-up, in their order.
std::int32_t setUp(AUEglobals* Globals, Run& run);

#endif
