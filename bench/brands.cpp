#include "brands.h"

#include <initializer_list>

using namespace code;

namespace {

struct Value {
    int number;
    float value;
};

struct BrandValues {
    Brand brand;
    std::initializer_list<Value> values;
};

// Litres, millimetres, days and kilowatt-hours, as everywhere in the engine.
const std::initializer_list<BrandValues> kBrands = {
    {kToilet, {{1, 4.5F}, {3, 0.1F}, {12, 0.05F}, {13, 0.01F}, {25, 300.0F}}},
    {kShower, {{1, 60.0F}, {3, 0.1F}, {12, 0.05F}, {13, 0.01F}, {25, 300.0F}}},
    {kLocalTreatment, {{1, 1000.0F}, {3, 0.2F}, {12, 0.05F}, {13, 9.0F}}},
    {kWasher, {{1, 50.0F}, {3, 0.1F}, {12, 0.05F}, {13, 0.01F}, {25, 300.0F}}},
    {kDishwasher, {{1, 14.0F}, {3, 0.8F}, {12, 0.05F}, {13, 0.01F}, {25, 300.0F}}},
    {kKitchenTap, {{1, 5.0F}, {3, 0.1F}, {12, 0.02F}, {13, 0.01F}, {25, 300.0F}}},
    {kBasin, {{1, 3.0F}, {3, 0.1F}, {12, 0.02F}, {13, 0.01F}, {25, 200.0F}}},
    {kBath, {{1, 80.0F}, {3, 2.0F}, {12, 0.05F}, {13, 0.01F}, {25, 200.0F}}},
    {kOutdoorUse, {{1, 250.0F}, {3, 0.01F}, {12, 0.01F}, {13, 0.01F}, {25, 5.0F}}},
    {kIndependentUse, {{1, 20.0F}, {3, 0.1F}, {12, 0.05F}, {13, 0.01F}, {25, 100.0F}}},
    {kInfiltrationLink, {{12, 0.01F}, {13, 3.0F}, {28, 0.02F}}},
    {kSoakaway, {{12, 0.0001F}, {13, 12.0F}, {28, 0.2F}}},
    {kRainwaterTreatment, {{1, 1000.0F}, {3, 0.001F}, {12, 0.05F}, {13, 9.0F}}},
    {kGreywaterTreatment, {{1, 1000.0F}, {3, 0.001F}, {12, 0.05F}, {13, 9.0F}}},
    {kWastewaterTreatment, {{1, 900.0F}, {3, 0.001F}, {12, 0.05F}, {13, 9.0F}}},
    {kSupplyLink, {{2, 0.0001F}, {3, 0.0005F}, {12, 0.01F}, {13, 3.0F}}},
    {kImperviousSurface, {{25, 10.0F}, {27, 0.1F}}},
    {kPerviousSurface, {{1, 5.0F}, {25, 20.0F}, {27, 0.1F}, {28, 0.05F}}},
    {kTank, {{12, 0.0001F}, {13, 12.0F}}},
    {kServiceReservoir, {{1, 2000.0F}, {12, 0.0001F}, {52, 0.35F}}},
    {kGravityLink, {{2, 0.0001F}, {3, 0.0005F}, {12, 0.01F}, {13, 3.0F}}},
    {kTreatmentPlant, {{1, 900.0F}, {2, 0.05F}, {3, 0.001F}, {12, 0.5F}, {13, 200.0F}}},
    {kWell, {{1, 800.0F}, {3, 0.0006F}, {12, 0.2F}, {13, 90.0F}}},
    {kReservoir, {{1, 1e6F}, {12, 2.0F}, {13, 900.0F}, {30, 100.0F}, {31, 3e4F}, {32, 0.0F}, {33, 0.0F}, {34, 0.5F}}},
    {kAbstraction, {{1, 2000.0F}, {2, 0.02F}, {3, 0.0004F}, {12, 0.4F}, {13, 90.0F}}},
    {kSewerLink, {{2, 0.01F}, {12, 0.01F}, {13, 3.0F}}},
    {kDrainageLink, {{2, 0.01F}, {12, 0.01F}, {13, 3.0F}}},
    {kHydropower,
     {{12, 1.0F},
      {13, 300.0F},
      {37, 0.0F},
      {38, 1.0F},
      {39, 0.0F},
      {40, 0.0F},
      {41, 0.0F},
      {42, 0.0F},
      {43, 0.0F},
      {44, 7.8F},
      {45, 0.0F},
      {46, 0.0F},
      {47, 10.0F},
      {48, 300.0F},
      {49, 1.0F},
      {50, 1e6F},
      {51, 0.0F}}},
    {kGreenArea, {{1, 40.0F}, {12, 0.002F}, {13, 0.5F}, {25, 15.0F}, {27, 0.2F}, {28, 0.05F}}},
    {kTreatmentLine, {{1, 1500.0F}, {2, 0.03F}, {3, 0.0005F}, {12, 0.4F}, {13, 400.0F}}},
    {kPotableTreatment, {{1, 2000.0F}, {2, 0.02F}, {3, 0.0004F}, {12, 0.4F}, {13, 90.0F}}},
    {kDetentionBasin, {{1, 1e-4F}}},
    {kPump, {{3, 0.0005F}, {12, 0.1F}, {13, 40.0F}}},
    {kMembrane, {{1, 1600.0F}, {3, 0.001F}, {12, 0.4F}, {13, 300.0F}}},
    {kSolarPanel, {{12, 0.05F}, {13, 2.0F}, {55, 0.4F}}},
    {kWindTurbine, {{1, 20.0F}, {12, 1.0F}, {13, 100.0F}, {56, 6.0F}}},
    {kSoilStore, {{1, 80.0F}, {25, 12.0F}, {28, 0.02F}, {57, 0.3F}, {58, 0.9F}, {59, 0.6F}, {60, 0.5F}}},
    {kQuotaLimiter, {{61, 1100.0F}, {62, 28000.0F}, {63, 280000.0F}}},
    {kLowReservoir, {{1, 1e6F}, {12, 2.0F}, {13, 900.0F}, {30, 20.0F}, {31, 3e4F}, {32, 0.0F}, {33, 0.0F}, {34, 0.5F}}},
};

}  // namespace

std::vector<SpecificationRow> allBrands() {
    std::vector<SpecificationRow> rows;
    for (const auto& [brand, values] : kBrands) {
        for (const auto& [number, value] : values)
            rows.push_back(
                {0.0F, 0.0F, static_cast<float>(brand), 0.0F, 1.0F, 1.0F, static_cast<float>(number), value, 0.0F});
    }
    return rows;
}
