// Catalogue: what turns water, wind and sun into energy, or energy into water.
#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

Type hydropower() {
    Type type{.name = "hydropower",
              .tag = "HD",
              .codes = {44},
              .summary =
                  "Passes its flow on and books the energy won from it as negative energy; the head comes from "
                  "its group's reservoir (0 without one).",
              .inputs = 1,
              .in = {{"inflow", Carries::water, "water through the turbine"}},
              .out = {withQuality(Quality::passed, {"outflow", Carries::water, "the same"})},
              .size = {"units, a factor on the energy", "-", 1},
              .parameters = {capacityCost("cost/step"), operationCost("cost/year")},
              .potentials = {kEnergy, kCapacity, kOperation},
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
        type.parameters.push_back({37 + i, kNames[i], "kW", kTerms[i], 0});
    }
    type.parameters.push_back({47, "head_min", "m", "lowest head at which it runs", 0});
    type.parameters.push_back({48, "head_max", "m", "highest head at which it runs"});
    type.parameters.push_back({49, "flow_min", "L/d", "lowest flow at which it runs", 0});
    type.parameters.push_back({50, "flow_limit_constant", "L/d", "largest flow used, at head 0"});
    type.parameters.push_back({51, "flow_limit_per_head", "L/d/m", "largest flow used, for each metre of head", 0});
    return type;
}

Type pumpedStorage() {
    return {.name = "pumped_storage",
            .tag = "RN",
            .codes = {54},
            .summary =
                "Turns an energy series into water moved between the first two reservoirs of its group, by the "
                "difference of their heads.",
            .out = {{"transfer", Carries::water, "water moved, with the first reservoir's quality"},
                    {"request", Carries::demand, "the same quantity, as a demand"}},
            .series = {ofItsOwn(demand, "kWh", "energy_available", "energy that there is for the transfer")},
            .reservoirs = 2};
}

Type pump() {
    return {.name = "pump",
            .tag = "PM",
            .codes = {55},
            .summary = "Passes its flow on and books the energy for it.",
            .inputs = 1,
            .in = {{"inflow", Carries::same, "what arrives"}},
            .out = {{"outflow", Carries::same, "the same"}},
            .size = {"factor on the energy", "-", 1},
            .parameters = {energyPerVolume(), capacityCost("cost/step"), operationCost("cost/year")},
            .potentials = {kCapacity, kOperation, kEnergy}};
}

Type solarPanel() {
    return {.name = "solar_panel",
            .tag = "PA",
            .codes = {59},
            .summary = "Books the energy of the day's radiation as negative energy. Daily steps only.",
            .size = {"area", "m2"},
            .parameters = {capacityCost("cost/m2/step"),
                           operationCost("cost/m2/year"),
                           {55, "yield_factor", "-", "share of the radiation that becomes energy"}},
            .series = {ofGroup(temperatureMin), ofGroup(temperatureMax)},
            .potentials = {kEnergy, kOperation, kCapacity},
            .dailyOnly = true,
            .usesLatitude = true};
}

Type netRadiation() {
    return {.name = "net_radiation",
            .tag = "NR",
            .codes = {60},
            .summary = "Books the day's net radiation on an area as energy. Daily steps only.",
            .size = {"area", "m2"},
            .series = {ofGroup(temperatureMin), ofGroup(temperatureMax)},
            .potentials = {kEnergy},
            .dailyOnly = true,
            .usesLatitude = true};
}

Type windTurbine() {
    return {.name = "wind_turbine",
            .tag = "WN",
            .codes = {61},
            .summary = "Books the energy of the wind by a power curve without cut-out, as negative energy.",
            .size = {"units", "-", 1},
            .parameters = {{1, "power_scale", "-", "scale of the power curve"},
                           capacityCost("cost/unit/step"),
                           operationCost("cost/unit/year"),
                           {56, "wind_divisor", "-", "divides the wind, for the height of the hub", 1}},
            .series = {ofGroup(wind)},
            .potentials = {kEnergy, kOperation, kCapacity}};
}

}  // namespace

std::vector<Type> energyUnits() {
    return {hydropower(), pumpedStorage(), pump(), solarPanel(), netRadiation(), windTurbine()};
}

}  // namespace kesto::tables
