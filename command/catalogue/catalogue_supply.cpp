// Catalogue: what stands between a demand and the sources of its water.
#include <algorithm>

#include "catalogue_tables.h"

namespace kesto::tables {

namespace {

const Port kRequest{"request", Carries::demand, "the demand and its loss, asked of the source"};
const Port kRequestUpstream{"request", Carries::demand, "the demand and its loss, asked for upstream"};
const Port kExcess{"excess", Carries::demand, "part of the demand above the capacity"};

// Of what asks upstream for a demand and the loss on its way.
BalanceIdentity demandWithLoss() {
    return {Carries::demand,
            "demand + loss = request",
            {share(Term::lost, "a fraction of the demand", Amounts::in1, spec::kLossFraction)},
            Stored::nothing,
            {.drawsFromSource = true, .secondIsReport = true}};
}

Type treatmentPlant() {
    return {
        .name = "treatment_plant",
        .tag = "TP",
        .family = "receiving_units",
        .codes = {code::kTreatmentPlant},
        .summary =
            "Treatment plant for drinking water, seen from the demand: asks upstream for demand and losses, reports "
            "what exceeds its capacity; with trace_sources it averages the qualities of its sources.",
        .in = {kDemand},
        .out = {kRequestUpstream, kExcess},
        .size = Size{"units of capacity", "-", range::kNotNegative, 1},
        .parameters = {{spec::kDailyCapacity, "daily_capacity", "L/d", "capacity of one unit in a day",
                        range::kNotNegative},
                       lossFraction("loss as a fraction of the demand", range::kRatio),
                       energyPerVolume(),
                       capacityCost("cost/unit/step"),
                       operationCost("cost/unit/year")},
        .series = {kOwnTracedQuality},
        .potentials = {kEnergy, kLosses, kCapacity, kOperation},
        .balance = demandWithLoss()};
}

Type takesFromSource(std::string_view name, std::string_view tag, int code, std::string_view summary) {
    return {.name = name,
            .tag = tag,
            .family = "supply_works",
            .codes = {code},
            .summary = summary,
            .in = {kDemand},
            .out = {kRequest, leavesQuality(kExcess)},
            .size = Size{"factor on the capacity cost", "-", range::kFactor, 1},
            .parameters = {{spec::kDailyCapacity, "daily_capacity", "L/d", "volume that it can deliver in a day",
                            range::kNotNegative},
                           lossFraction("loss as a fraction of the demand", range::kRatio),
                           energyPerVolume(),
                           capacityCost("cost/step"),
                           operationCost("cost/year")},
            .series = kNothing,
            .potentials = {kEnergy, kCapacity, kOperation, kLosses},
            .balance = demandWithLoss()};
}

Type treatmentLine() {
    return {
        .name = "treatment_line",
        .tag = "WP",
        .family = "supply_works",
        .codes = {code::kTreatmentLine},
        .summary = "Passes on its inflow less a loss, and reports what exceeds its capacity.",
        .in = {kInflow},
        .out = {kOutflow, withQuality(Quality::passed, {"excess", Carries::demand,
                                                        "inflow above the capacity; it is part of the outflow too"})},
        .size = Size{"factor on the capacity cost", "-", range::kFactor, 1},
        .parameters = {{spec::kDailyCapacity, "daily_capacity", "L/d", "volume that it can take in a day",
                        range::kNotNegative},
                       lossFraction("fraction of the inflow that is lost"),
                       energyPerVolume(),
                       capacityCost("cost/step"),
                       operationCost("cost/year")},
        .series = kNothing,
        .potentials = {kEnergy, kCapacity, kOperation, kLosses},
        .balance = {Carries::water,
                    "inflow = outflow + loss",
                    {share(Term::lost, "a fraction of the inflow", Amounts::in1, spec::kLossFraction)},
                    Stored::nothing,
                    {.secondIsReport = true}}};
}

double abstracted(const BalanceStep& s) {
    return std::min(s.timeStep * s.parameter(spec::kYieldPerArea) * s.size, s.in[0]);
}

double unmetByWell(const BalanceStep& s) {
    return s.out[0];
}

Type well() {
    return {.name = "well",
            .tag = "GW",
            .family = "well",
            .codes = {code::kWell},
            .summary = "Takes water from the ground up to a yield; what it takes is booked as negative infiltration.",
            .in = {kDemand},
            .out = {{"unmet", Carries::demand, "part of the demand that it cannot meet"}},
            .size = Size{"area", "m2", range::kArea},
            .parameters = {{spec::kYieldPerArea, "yield_per_area", "L/m2/d", "water that each m2 yields in a day",
                            range::kNotNegative},
                           energyPerVolume(),
                           capacityCost("cost/m2/step"),
                           operationCost("cost/m2/year")},
            .series = kNothing,
            .potentials = {kEnergy, kCapacity, kOperation, kInfiltration},
            .balance = {Carries::water,
                        "abstracted = demand - unmet",
                        {computed(Term::drawn, "from the ground, up to its yield", abstracted, Amounts::in1),
                         difference(Term::served, "demand less what it cannot meet", Amounts::in1, Amounts::out1)},
                        Stored::nothing},
            .service = {1, unmetByWell, Amounts::out1}};
}

}  // namespace

std::vector<Type> supply() {
    return {treatmentPlant(), treatmentLine(), well(),
            takesFromSource("abstraction", "AQ", code::kAbstraction,
                            "Takes water from a source up to a capacity; with stop_on_infeasible it stops the run when "
                            "asked for more."),
            takesFromSource("potable_treatment", "PT", code::kPotableTreatment,
                            "The same model as abstraction under its own name.")};
}

}  // namespace kesto::tables
