// Catalogue: what keeps water from one step to the next.
#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

const Port kInflow{"inflow", Carries::water, "water that flows in"};
const Port kDemand{"demand", Carries::demand, "water asked of it"};
const Port kDeficit{"deficit", Carries::demand, "part of the demand that it could not serve"};
const Port kOverflow{"overflow", Carries::water, "water that it could not hold"};

Type tank() {
    return {.name = "tank",
            .tag = "TN",
            .codes = {32},
            .summary = "Storage tank: serves a demand from inflow and storage, spills what it cannot hold.",
            .inputs = 2,
            .in = {kInflow, kDemand},
            .out = {kDeficit, kOverflow},
            .size = {"capacity", "L"},
            .parameters = {capacityCost("cost/L/step"), operationCost("cost/year")},
            .series = {kOwnVolume},
            .potentials = {kCapacity, kOperation}};
}

// The three stores with a steady draw differ only in what they book.
Type drawStore(std::string_view name, std::string_view tag, int code, std::string_view summary, Parameter energy) {
    return {.name = name,
            .tag = tag,
            .codes = {code},
            .summary = summary,
            .inputs = 1,
            .in = {kInflow},
            .out = {withQuality(Quality::passed,
                                {"supplied", Carries::water, "water drawn, with a hundredth of the inflow's quality"}),
                    withQuality(Quality::spill, kOverflow)},
            .size = {"capacity", "L"},
            .parameters = {{1, "draw_per_day", "L/d", "volume drawn from the store each day"},
                           energy,
                           capacityCost("cost/step"),
                           operationCost("cost/year")},
            .series = {kOwnVolume},
            .potentials = {kEnergy, kOperation, kCapacity}};
}

Type soakaway() {
    return {.name = "soakaway",
            .tag = "CS",
            .codes = {22},
            .summary = "Soak-away: holds water up to a capacity and lets a share of it infiltrate each day.",
            .inputs = 1,
            .in = {kInflow},
            .out = {withQuality(Quality::passed, kOverflow)},
            .size = {"capacity", "L"},
            .parameters = {capacityCost("cost/L/step"),
                           operationCost("cost/year"),
                           {28, "infiltration_rate", "1/d", "share of the stored volume that infiltrates"}},
            .series = {kOwnVolume},
            .potentials = {kOperation, kCapacity, kInfiltration}};
}

Type serviceReservoir() {
    return {.name = "service_reservoir",
            .tag = "RS",
            .codes = {33},
            .summary =
                "Refilled store: serves a demand and asks upstream for its refill; with trace_sources it mixes "
                "the qualities of its sources.",
            .inputs = 1,
            .in = {kDemand},
            .out = {{"request", Carries::demand, "refill asked for upstream"}},
            .size = {"capacity", "L"},
            .parameters = {capacityCost("cost/L/step"),
                           {52, "refill_rate", "1/d", "share of the capacity that can be refilled in a day"}},
            .series = {kOwnVolume, kOwnTracedQuality},
            .potentials = {kCapacity}};
}

Type reservoir() {
    return {.name = "reservoir",
            .tag = "SW",
            .codes = {39},
            .summary =
                "Surface-water store with a mixed quality, a head curve and seepage. Units of its group find it: "
                "hydropower, pumped_storage, quality_switch, quality_from_reservoir.",
            .inputs = 2,
            .in = {kInflow, kDemand},
            .out = {kDeficit, withQuality(Quality::mixed, kOverflow)},
            .parameters = {{1, "storage_capacity", "L", "volume that it can hold"},
                           capacityCost("cost/step"),
                           operationCost("cost/year"),
                           {30, "head_constant", "m", "head curve: head of the empty store", 0},
                           {31, "head_linear", "m/(1e9 L)", "head curve: linear term", 0},
                           {32, "head_quadratic", "m/(1e9 L)2", "head curve: quadratic term", 0},
                           {33, "seepage_constant", "L/d", "seepage at head 0", 0},
                           {34, "seepage_per_head", "L/d/m", "seepage for each unit of head", 0}},
            .series = {kOwnVolume, kOwnQuality},
            .potentials = {kCapacity, kOperation, kInfiltration}};
}

Type detentionBasin() {
    return {.name = "detention_basin",
            .tag = "DT",
            .codes = {50},
            .summary = "Basin whose outflow grows with its level to the power 1.5, as over a weir.",
            .inputs = 1,
            .in = {kInflow},
            .out = {withQuality(Quality::passed,
                                {"outflow", Carries::water, "what leaves over the outlet, with the inflow's quality"})},
            .size = {"area", "m2"},
            .parameters = {{1, "outlet_coefficient", "mm^-0.5/min", "outflow depth for each mm^1.5 of level"}},
            .series = {kOwnDepth}};
}

}  // namespace

std::vector<Type> stores() {
    const Parameter perDay{3, "energy_per_day", "kWh/d", "energy spent each day, whatever the flow", 0};
    return {
        tank(),
        drawStore("local_treatment", "LT", 3, "Treatment with a store and a steady draw; energy by the day.", perDay),
        drawStore("rainwater_treatment", "CR", 23,
                  "Treatment with a store and a steady draw; energy for each litre of inflow up to the draw.",
                  energyPerVolume()),
        drawStore("greywater_treatment", "CG", 24, "The same model as rainwater_treatment under its own name.",
                  energyPerVolume()),
        soakaway(),
        serviceReservoir(),
        reservoir(),
        detentionBasin()};
}

}  // namespace kesto::tables
