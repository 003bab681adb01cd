// The networks that the benchmarks run. Each builder makes about n components, and at least one of its pattern.
#ifndef KESTO_BENCH_NETWORKS_H
#define KESTO_BENCH_NETWORKS_H

#include <cstdint>

#include "network.h"

// A roof whose water runs through n - 2 links, one after the other, to a logger.
void buildChain(Network& network, std::int32_t n);

// Houses of 10 components side by side, each with a roof, a tank and appliances.
void buildHouses(Network& network, std::int32_t n);

// Houses of 10 components whose greywater comes back to the tank through a membrane, and through a delay what
// overflowed the day before: 4 components on a cycle.
void buildLoops(Network& network, std::int32_t n);

// Groups of 10 components in which service reservoirs ask for water through splitters and trace its sources.
void buildReceivers(Network& network, std::int32_t n);

// Quarters of 100 components, see city.cpp. The second lists the same city by type.
void buildCity(Network& network, std::int32_t n);
void buildCityByType(Network& network, std::int32_t n);

// Components of one type with what feeds them, and whose outputs nobody reads.
void buildOneType(Network& network, std::int32_t n, Type type);

#endif
