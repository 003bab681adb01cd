// Catalogue: what uses water.
#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

double asked(const BalanceStep& s) {
    return s.given * s.size / 100;
}

Type appliance() {
    return {.name = "appliance",
            .tag = "OU",
            .family = "appliance",
            .codes = {code::kAppliances.begin(), code::kAppliances.end()},
            .summary =
                "A use of water by a group. What a kind stands for is up to the model, but kinds 9 and 10 do not "
                "depend on the people present, and the water of kind 9 goes into the ground.",
            .in = kNothing,
            .out = {{"wastewater", Carries::water, "what is released, with water_quality"},
                    {"demand", Carries::demand, "what is drawn"}},
            .size = kNothing,
            .parameters = {{spec::kVolumePerUse, "volume_per_use", "L", "water drawn for one use", range::kNotNegative},
                           {spec::kEnergyPerUse, "energy_per_use", "kWh", "energy spent on one use", range::kAny, 0},
                           capacityCost("cost/step"),
                           operationCost("cost/use"),
                           waterQuality("quality of the water released")},
            .series = {ofGroup(uses), ofGroup(occupancy), ofGroup(demandFluctuation)},
            .potentials = {kEnergy, kOperation, kCapacity, kInfiltration},
            .balance = {Carries::water,
                        "drawn = wastewater + infiltration",
                        {whole(Term::released, "what it draws, whether or not anybody delivers it", Amounts::out2),
                         {.term = Term::infiltrated,
                          .meaning = "all of kind 9",
                          .reads = Amounts::out2,
                          .onlyOf = code::kOutdoorUse}},
                        Stored::nothing}};
}

Type demandSource() {
    return {
        .name = "demand_source",
        .tag = "IN",
        .family = "demand_source",
        .codes = {code::kDemandSource},
        .summary = "A demand given as a series, taken to a percentage.",
        .in = kNothing,
        .out = {{"demand", Carries::demand, "the series times the percentage"}},
        .size = Size{"percentage of the series", "%", range::kFactor, 100},
        .parameters = kNothing,
        .series = {ofItsOwn(demand)},
        .potentials = kNothing,
        .balance = {Carries::demand, "series = demand", {computed(Term::used, "the series", asked)}, Stored::nothing}};
}

}  // namespace

std::vector<Type> users() {
    return {appliance(), demandSource()};
}

}  // namespace kesto::tables
