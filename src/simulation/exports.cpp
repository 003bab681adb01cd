// Apart from the driver, so that tests can link it with a KESTO_simul of their own.

#include "simulation.h"

std::int32_t KESTO_simul(AUEglobals* Globals, std::int32_t first, std::int32_t last) {
    return simulate(Globals, first, last);
}
