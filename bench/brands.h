// Types of components, and one brand for each that has specifications.
#ifndef KESTO_BENCH_BRANDS_H
#define KESTO_BENCH_BRANDS_H

#include <cstdint>
#include <vector>

#include "AUEglobals.h"

enum Type : std::int32_t {
    kToilet = 1,
    kShower = 2,
    kSteadyDraw = 3,
    kWasher = 4,
    kDishwasher = 5,
    kKitchenTap = 6,
    kBasin = 7,
    kBath = 8,
    kGarden = 9,
    kIndependent = 10,
    kSeepageLink = 11,
    kSoakaway = 22,
    kRainStore = 23,
    kGreywaterStore = 24,
    kTreatment = 25,
    kLogger = 26,
    kSupplyLink = 27,
    kRoof = 28,
    kPervious = 29,
    kJunction = 30,
    kMixer = 31,
    kTank = 32,
    kRefilledStore = 33,
    kScalingLink = 34,
    kLink = 35,
    kSplitter = 36,
    kThroughput = 37,
    kWell = 38,
    kReservoir = 39,
    kAbstraction = 40,
    kSewerLink = 41,
    kDrainLink = 42,
    kWaterBody = 43,
    kHydropower = 44,
    kDemandSource = 45,
    kGreenRoof = 46,
    kTreatmentWorks = 47,
    kTransport = 48,
    kQualityReader = 49,
    kOutletStore = 50,
    kDelay = 51,
    kConnector = 52,
    kDivider = 53,
    kRelease = 54,
    kPump = 55,
    kQualitySetter = 56,
    kQualitySwitch = 57,
    kMembrane = 58,
    kCollector = 59,
    kNetRadiation = 60,
    kWindEnergy = 61,
    kSoilWater = 62,
    kSwitch = 63,
    kQuota = 64,
};

// The number of a brand. That of a type is the type's code.
using Brand = std::int32_t;
inline constexpr Brand kLowReservoir = 139;  // whose water stands lower than that of other reservoirs

// Each brand's rows in ascending order of number, as the engine's search wants them.
std::vector<SpecificationRow> allBrands();

#endif
