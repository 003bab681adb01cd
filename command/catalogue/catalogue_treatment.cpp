// Catalogue: treatment of water that flows through.
#include "catalogue_tables.h"

namespace kesto::tables {

namespace {

// The three stores with a steady draw differ only in what they book.
Type drawStore(std::string_view name, std::string_view tag, int code, std::string_view summary, Parameter energy) {
    return {.name = name,
            .tag = tag,
            .family = "treatment_stages",
            .codes = {code},
            .summary = summary,
            .in = {kInflow},
            .out = {withQuality(Quality::passed,
                                {"supplied", Carries::water, "water drawn, with a hundredth of the inflow's quality"}),
                    withQuality(Quality::spill, kOverflow)},
            .size = Size{"capacity", "L", range::kStore},
            .parameters = {{spec::kDrawPerDay, "draw_per_day", "L/d", "volume drawn from the store each day",
                            range::kNotNegative},
                           energy,
                           capacityCost("cost/step"),
                           operationCost("cost/year")},
            .series = {kOwnVolume},
            .potentials = {kEnergy, kOperation, kCapacity},
            .balance = {Carries::water, "inflow + S = supplied + overflow + S'", {}, Stored::litres}};
}

Type localTreatment() {
    return drawStore(
        "local_treatment", "LT", code::kLocalTreatment, "Treatment with a store and a steady draw; energy by the day.",
        {spec::kEnergyPerDay, "energy_per_day", "kWh/d", "energy spent each day, whatever the flow", range::kAny, 0});
}

Type wastewaterTreatment() {
    return {.name = "wastewater_treatment",
            .tag = "CW",
            .family = "treatment_stages",
            .codes = {code::kWastewaterTreatment},
            .summary = "Passes all water on; within its capacity it lowers a quality of 10 or more to a tenth.",
            .in = {kInflow},
            .out = {kOutflow},
            .size = kNothing,
            .parameters = {{spec::kTreatmentCapacity, "treatment_capacity", "L/d", "volume that it can treat in a day",
                            range::kNotNegative},
                           energyPerVolume(),
                           capacityCost("cost/step"),
                           operationCost("cost/year")},
            .series = kNothing,
            .potentials = {kEnergy, kOperation, kCapacity},
            .balance = {Carries::water, "inflow = outflow", {}, Stored::nothing}};
}

Type membrane() {
    return {
        .name = "membrane",
        .tag = "MN",
        .family = "membrane",
        .codes = {code::kMembrane},
        .summary = "Recovers seven tenths of what it can take as clean water; the rest leaves as concentrate.",
        .in = {kInflow},
        .out = {withQuality(Quality::passed,
                            {"permeate", Carries::water, "recovered, with a hundredth of the inflow's quality"}),
                withQuality(Quality::passed, {"concentrate", Carries::water, "the rest of the water and of the load"})},
        .size = kNothing,
        .parameters = {{spec::kTreatmentCapacity, "treatment_capacity", "L/d", "volume that it can take in a day",
                        range::kNotNegative},
                       energyPerVolume(),
                       capacityCost("cost/step"),
                       operationCost("cost/year")},
        .series = kNothing,
        .potentials = {kEnergy, kOperation, kCapacity},
        .balance = {Carries::water, "inflow = permeate + concentrate", {}, Stored::nothing}};
}

}  // namespace

std::vector<Type> treatment() {
    return {localTreatment(),
            drawStore("rainwater_treatment", "CR", code::kRainwaterTreatment,
                      "Treatment with a store and a steady draw; energy for each litre of inflow up to the draw.",
                      energyPerVolume()),
            drawStore("greywater_treatment", "CG", code::kGreywaterTreatment,
                      "The same model as rainwater_treatment under its own name.", energyPerVolume()),
            wastewaterTreatment(), membrane()};
}

}  // namespace kesto::tables
