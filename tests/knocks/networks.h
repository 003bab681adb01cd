// Networks for hard knocks.
#ifndef KESTO_TESTS_KNOCKS_NETWORKS_H
#define KESTO_TESTS_KNOCKS_NETWORKS_H

#include <cstdint>

#include "model.h"

// Uses all that set-up can build: loggers, a delay in a loop, a quota limiter, a water body, multipliers one after the
// other and alone, receiving units that trace their sources through a splitter, potentials of two groups.
Model makeEverything();

// Roof, soil, garden roof, tank, limiter and collector under a calendar, for runs of any length.
Model makeDaily(std::int32_t steps);

// `houses` times: a roof, a tank that an appliance draws on, a sewer, and a logger of what runs over.
Model makeHouses(int houses, std::int32_t steps);

#endif
