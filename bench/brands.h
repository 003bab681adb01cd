// One brand for each type of component that has specifications.
#ifndef KESTO_BENCH_BRANDS_H
#define KESTO_BENCH_BRANDS_H

#include <cstdint>
#include <vector>

#include "AUEglobals.h"
#include "components/type_codes.h"

using Type = std::int32_t;

// What the kinds of appliances stand for here; kinds 9 and 10 are the outdoor and the independent use.
inline constexpr Type kToilet = 1;
inline constexpr Type kShower = 2;
inline constexpr Type kWasher = 4;
inline constexpr Type kDishwasher = 5;
inline constexpr Type kKitchenTap = 6;
inline constexpr Type kBasin = 7;
inline constexpr Type kBath = 8;

// The number of a brand. That of a type is the type's code.
using Brand = std::int32_t;
inline constexpr Brand kLowReservoir = 139;  // whose water stands lower than that of other reservoirs

// Each brand's rows in ascending order of number, as the engine's search wants them.
std::vector<SpecificationRow> allBrands();

#endif
