// Catalogue: what turns water, wind and sun into energy, or energy into water.
#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

Type hydropower() {
    Type type{.name = "hydropower",
              .tag = "HD",
              .family = "hydropower",
              .codes = {code::kHydropower},
              .summary =
                  "Passes its flow on and books the energy won from it as negative energy; the head comes from "
                  "its group's reservoir (0 without one).",
              .in = {{"inflow", Carries::water, "water through the turbine"}},
              .out = {withQuality(Quality::passed, {"outflow", Carries::water, "the same"})},
              .size = Size{"units, a factor on the energy", "-", range::kFactor, 1},
              .parameters = {capacityCost("cost/step"), operationCost("cost/year")},
              .series = kNothing,
              .potentials = {kEnergy, kCapacity, kOperation},
              .balance = {Carries::water, "inflow = outflow", {}, Stored::nothing},
              .reservoirs = 1,
              .reservoirsOptional = true};
    static constexpr std::string_view kTerms[] = {"power curve: constant term",
                                                  "power curve: of the flow q [m3/s]",
                                                  "power curve: of the head H [m]",
                                                  "power curve: of q q",
                                                  "power curve: of H H",
                                                  "power curve: of q q q",
                                                  "power curve: of H H H",
                                                  "power curve: of q H",
                                                  "power curve: of q q H",
                                                  "power curve: of q H H"};
    static constexpr std::string_view kNames[] = {"power_c0", "power_c1", "power_c2", "power_c3", "power_c4",
                                                  "power_c5", "power_c6", "power_c7", "power_c8", "power_c9"};
    for (int i = 0; i < 10; ++i) {
        type.parameters.push_back({spec::kPowerCurve + i, kNames[i], "kW", kTerms[i], range::kAny, 0});
    }
    type.parameters.push_back({spec::kHeadMin, "head_min", "m", "lowest head at which it runs", range::kAny, 0});
    type.parameters.push_back({spec::kHeadMax, "head_max", "m", "highest head at which it runs", range::kAny});
    type.parameters.push_back({spec::kFlowMin, "flow_min", "L/d", "lowest flow at which it runs", range::kAny, 0});
    type.parameters.push_back(
        {spec::kFlowLimitConstant, "flow_limit_constant", "L/d", "largest flow used, at head 0", range::kAny});
    type.parameters.push_back({spec::kFlowLimitPerHead, "flow_limit_per_head", "L/d/m",
                               "largest flow used, for each metre of head", range::kAny, 0});
    return type;
}

Type pumpedStorage() {
    return {.name = "pumped_storage",
            .tag = "RN",
            .family = "pumped_storage",
            .codes = {code::kPumpedStorage},
            .summary =
                "Turns an energy series into water moved between the first two reservoirs of its group, by the "
                "difference of their heads.",
            .in = kNothing,
            .out = {{"transfer", Carries::water, "water moved, with the first reservoir's quality"},
                    {"request", Carries::demand, "the same quantity, as a demand"}},
            .size = kNothing,
            .parameters = kNothing,
            .series = {ofItsOwn(demand, "kWh", "energy_available", "energy that there is for the transfer")},
            .potentials = kNothing,
            .balance = {Carries::water,
                        "request = transfer",
                        {whole(Term::takenForDelivered, "it moves water, whether or not the reservoir can give it",
                               Amounts::out2)},
                        Stored::nothing,
                        {.asksBy = 2}},
            .reservoirs = 2};
}

Type pump() {
    return {.name = "pump",
            .tag = "PM",
            .family = "pump",
            .codes = {code::kPump},
            .summary = "Passes its flow on and books the energy for it.",
            .in = {kArrives},
            .out = {passes("outflow", "the same")},
            .size = Size{"factor on the energy", "-", range::kFactor, 1},
            .parameters = {energyPerVolume(), capacityCost("cost/step"), operationCost("cost/year")},
            .series = kNothing,
            .potentials = {kCapacity, kOperation, kEnergy},
            .balance = {Carries::same, "inflow = outflow", {}, Stored::nothing}};
}

Type solarPanel() {
    return {.name = "solar_panel",
            .tag = "PA",
            .family = "radiation_energy",
            .codes = {code::kSolarPanel},
            .summary = "Books the energy of the day's radiation as negative energy. Daily steps only.",
            .in = kNothing,
            .out = kNothing,
            .size = Size{"area", "m2", range::kArea},
            .parameters = {capacityCost("cost/m2/step"),
                           operationCost("cost/m2/year"),
                           {spec::kYieldFactor, "yield_factor", "-", "share of the radiation that becomes energy",
                            range::kRatio}},
            .series = {ofGroup(temperatureMin), ofGroup(temperatureMax)},
            .potentials = {kEnergy, kOperation, kCapacity},
            .balance = kNoWaterPasses,
            .dailyOnly = true,
            .usesLatitude = true};
}

Type netRadiation() {
    return {.name = "net_radiation",
            .tag = "NR",
            .family = "radiation_energy",
            .codes = {code::kNetRadiation},
            .summary = "Books the day's net radiation on an area as energy. Daily steps only.",
            .in = kNothing,
            .out = kNothing,
            .size = Size{"area", "m2", range::kArea},
            .parameters = kNothing,
            .series = {ofGroup(temperatureMin), ofGroup(temperatureMax)},
            .potentials = {kEnergy},
            .balance = kNoWaterPasses,
            .dailyOnly = true,
            .usesLatitude = true,
            .booksHeat = true};
}

Type windTurbine() {
    return {.name = "wind_turbine",
            .tag = "WN",
            .family = "wind_turbine",
            .codes = {code::kWindTurbine},
            .summary = "Books the energy of the wind by a power curve without cut-out, as negative energy.",
            .in = kNothing,
            .out = kNothing,
            .size = Size{"units", "-", range::kFactor, 1},
            .parameters = {{spec::kPowerScale, "power_scale", "-", "scale of the power curve", range::kFactor},
                           capacityCost("cost/unit/step"),
                           operationCost("cost/unit/year"),
                           {spec::kWindDivisor, "wind_divisor", "-", "divides the wind, for the height of the hub",
                            range::kPositive, 1}},
            .series = {ofGroup(wind)},
            .potentials = {kEnergy, kOperation, kCapacity},
            .balance = kNoWaterPasses};
}

}  // namespace

std::vector<Type> energyUnits() {
    return {hydropower(), pumpedStorage(), pump(), solarPanel(), netRadiation(), windTurbine()};
}

}  // namespace kesto::tables
