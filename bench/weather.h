// Weather made up: no pattern that a processor could foresee, the same in each run.
#ifndef KESTO_BENCH_WEATHER_H
#define KESTO_BENCH_WEATHER_H

#include <cstdint>

// Between 0 and 1, by number.
float chance(std::int32_t number);

// Rain on four days out of ten, more often in winter; 2.7 mm a day on the average [mm].
float rainfall(std::int32_t step);

// A year's course of the mean temperature, with no frost [degC].
float temperature(std::int32_t step);

#endif
