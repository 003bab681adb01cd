// The codes of the component types, under the names that a model file uses. simulation/dispatch.cpp says what each is.
#ifndef KESTO_COMPONENTS_TYPE_CODES_H
#define KESTO_COMPONENTS_TYPE_CODES_H

#include <cstdint>

namespace code {

// Appliances have a code for each kind of use, 1, 2 and 4 to 10. What a kind stands for is up to the model, but for
// two.
inline constexpr std::int32_t kOutdoorUse = 9;
inline constexpr std::int32_t kIndependentUse = 10;

inline constexpr std::int32_t kLocalTreatment = 3;
inline constexpr std::int32_t kInfiltrationLink = 11;
inline constexpr std::int32_t kSoakaway = 22;
inline constexpr std::int32_t kRainwaterTreatment = 23;
inline constexpr std::int32_t kGreywaterTreatment = 24;
inline constexpr std::int32_t kWastewaterTreatment = 25;
inline constexpr std::int32_t kLogger = 26;
inline constexpr std::int32_t kSupplyLink = 27;
inline constexpr std::int32_t kImperviousSurface = 28;
inline constexpr std::int32_t kPerviousSurface = 29;
inline constexpr std::int32_t kJunction = 30;
inline constexpr std::int32_t kMixer = 31;
inline constexpr std::int32_t kTank = 32;
inline constexpr std::int32_t kServiceReservoir = 33;
inline constexpr std::int32_t kMultiplier = 34;
inline constexpr std::int32_t kGravityLink = 35;
inline constexpr std::int32_t kSplitter = 36;
inline constexpr std::int32_t kTreatmentPlant = 37;
inline constexpr std::int32_t kWell = 38;
inline constexpr std::int32_t kReservoir = 39;
inline constexpr std::int32_t kAbstraction = 40;
inline constexpr std::int32_t kSewerLink = 41;
inline constexpr std::int32_t kDrainageLink = 42;
inline constexpr std::int32_t kWaterBody = 43;
inline constexpr std::int32_t kHydropower = 44;
inline constexpr std::int32_t kDemandSource = 45;
inline constexpr std::int32_t kGreenArea = 46;
inline constexpr std::int32_t kTreatmentLine = 47;
inline constexpr std::int32_t kPotableTreatment = 48;
inline constexpr std::int32_t kQualityFromReservoir = 49;
inline constexpr std::int32_t kDetentionBasin = 50;
inline constexpr std::int32_t kDelay = 51;
inline constexpr std::int32_t kConnector = 52;
inline constexpr std::int32_t kThresholdDivider = 53;
inline constexpr std::int32_t kPumpedStorage = 54;
inline constexpr std::int32_t kPump = 55;
inline constexpr std::int32_t kQualitySetter = 56;
inline constexpr std::int32_t kQualitySwitch = 57;
inline constexpr std::int32_t kMembrane = 58;
inline constexpr std::int32_t kSolarPanel = 59;
inline constexpr std::int32_t kNetRadiation = 60;
inline constexpr std::int32_t kWindTurbine = 61;
inline constexpr std::int32_t kSoilStore = 62;
inline constexpr std::int32_t kThresholdSwitch = 63;
inline constexpr std::int32_t kQuotaLimiter = 64;

}  // namespace code

#endif
