// The numbers that the engine knows types and specifications by, under the names that the model file has for them.
#pragma once

#include <array>

namespace kesto {

namespace code {

// Appliances have a code for each kind of use. What a kind stands for is up to the model, but for two.
inline constexpr int kOutdoorUse = 9;       // its water goes into the ground
inline constexpr int kIndependentUse = 10;  // like the outdoor use, it does not depend on the people present
inline constexpr std::array kAppliances{1, 2, 4, 5, 6, 7, 8, kOutdoorUse, kIndependentUse};

inline constexpr int kLocalTreatment = 3;
inline constexpr int kInfiltrationLink = 11;
inline constexpr int kSoakaway = 22;
inline constexpr int kRainwaterTreatment = 23;
inline constexpr int kGreywaterTreatment = 24;
inline constexpr int kWastewaterTreatment = 25;
inline constexpr int kLogger = 26;
inline constexpr int kSupplyLink = 27;
inline constexpr int kImperviousSurface = 28;
inline constexpr int kPerviousSurface = 29;
inline constexpr int kJunction = 30;
inline constexpr int kMixer = 31;
inline constexpr int kTank = 32;
inline constexpr int kServiceReservoir = 33;
inline constexpr int kMultiplier = 34;
inline constexpr int kGravityLink = 35;
inline constexpr int kSplitter = 36;
inline constexpr int kTreatmentPlant = 37;
inline constexpr int kWell = 38;
inline constexpr int kReservoir = 39;
inline constexpr int kAbstraction = 40;
inline constexpr int kSewerLink = 41;
inline constexpr int kDrainageLink = 42;
inline constexpr int kWaterBody = 43;
inline constexpr int kHydropower = 44;
inline constexpr int kDemandSource = 45;
inline constexpr int kGreenArea = 46;
inline constexpr int kTreatmentLine = 47;
inline constexpr int kPotableTreatment = 48;
inline constexpr int kQualityFromReservoir = 49;
inline constexpr int kDetentionBasin = 50;
inline constexpr int kDelay = 51;
inline constexpr int kConnector = 52;
inline constexpr int kThresholdDivider = 53;
inline constexpr int kPumpedStorage = 54;
inline constexpr int kPump = 55;
inline constexpr int kQualitySetter = 56;
inline constexpr int kQualitySwitch = 57;
inline constexpr int kMembrane = 58;
inline constexpr int kSolarPanel = 59;
inline constexpr int kNetRadiation = 60;
inline constexpr int kWindTurbine = 61;
inline constexpr int kSoilStore = 62;
inline constexpr int kThresholdSwitch = 63;
inline constexpr int kQuotaLimiter = 64;

// Those that the engine may take for the source of a receiving unit, whose quality it then reads. The engine matches
// the digits of a code within "37 33" and "39 38", so that 3, 7, 8 and 9 are among them.
inline constexpr std::array kServiceReservoirSources{3, 7, kServiceReservoir, kTreatmentPlant};
inline constexpr std::array kTreatmentPlantSources{3, 8, 9, kWell, kReservoir};

}  // namespace code

// Numbers of specifications. One number can mean different things in different types; one name is always one number.
namespace spec {

inline constexpr int kVolumePerUse = 1;
inline constexpr int kStorageDepth = 1;
inline constexpr int kStorageCapacity = 1;
inline constexpr int kOutletCoefficient = 1;
inline constexpr int kDrawPerDay = 1;
inline constexpr int kTreatmentCapacity = 1;
inline constexpr int kDailyCapacity = 1;
inline constexpr int kYieldPerArea = 1;
inline constexpr int kPowerScale = 1;
inline constexpr int kLossFraction = 2;
inline constexpr int kEnergyPerUse = 3;
inline constexpr int kEnergyPerVolume = 3;
inline constexpr int kEnergyPerDay = 3;
inline constexpr int kCapacityCost = 12;
inline constexpr int kOperationCost = 13;
inline constexpr int kWaterQuality = 25;
inline constexpr int kEvaporationFraction = 27;
inline constexpr int kEvaporationRate = 27;
inline constexpr int kGroundwaterEvaporationFraction = 27;
inline constexpr int kInfiltrationRate = 28;
inline constexpr int kInfiltrationFraction = 28;
inline constexpr int kHeadConstant = 30;
inline constexpr int kHeadLinear = 31;
inline constexpr int kHeadQuadratic = 32;
inline constexpr int kSeepageConstant = 33;
inline constexpr int kSeepagePerHead = 34;
inline constexpr int kPowerCurve = 37;  // the first of ten coefficients
inline constexpr int kHeadMin = 47;
inline constexpr int kHeadMax = 48;
inline constexpr int kFlowMin = 49;
inline constexpr int kFlowLimitConstant = 50;
inline constexpr int kFlowLimitPerHead = 51;
inline constexpr int kRefillRate = 52;
inline constexpr int kYieldFactor = 55;
inline constexpr int kWindDivisor = 56;
inline constexpr int kOutflowRate = 57;
inline constexpr int kRainEntryFraction = 58;
inline constexpr int kEvaporationFactor = 59;
inline constexpr int kThresholdFraction = 60;
inline constexpr int kDailyLimit = 61;
inline constexpr int kMonthlyLimit = 62;
inline constexpr int kYearlyLimit = 63;

}  // namespace spec

}  // namespace kesto
