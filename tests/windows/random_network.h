// Random networks of all component types, complete enough that most of them run to the end.
#ifndef KESTO_TESTS_RANDOM_NETWORK_H
#define KESTO_TESTS_RANDOM_NETWORK_H

#include "network_file.h"

// The same seed gives the same network again.
NetworkCall randomNetwork(std::uint32_t seed);

#endif
