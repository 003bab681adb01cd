// Catalogue: treatment, links with losses, and where water is taken from.
#include "catalogue_tables.h"

namespace kesto::tables {

namespace {

const Port kInflow{"inflow", Carries::water, "water that flows in"};
const Port kOutflow = withQuality(Quality::passed, {"outflow", Carries::water, "water passed on"});
const Port kDemand{"demand", Carries::demand, "water asked of it"};

Type link(std::string_view name, std::string_view tag, int code, std::string_view summary, bool energy) {
    Type type{.name = name,
              .tag = tag,
              .codes = {code},
              .summary = summary,
              .inputs = 1,
              .in = {kInflow},
              .out = {kOutflow},
              .parameters = {lossFraction("fraction of the flow that is lost"), capacityCost("cost/step"),
                             operationCost("cost/year")},
              .potentials = {kCapacity, kOperation, kLosses}};
    if (energy) {
        type.parameters.insert(type.parameters.begin() + 1, energyPerVolume());
        type.potentials.insert(type.potentials.begin(), kEnergy);
    }
    return type;
}

Type supplyLink() {
    Type type =
        link("supply_link", "PL", 27,
             "Pipe seen from its end: a demand that travels through it grows by what the pipe will lose.", true);
    type.in = {kDemand};
    type.out = {
        withQuality(Quality::passed, {"request", Carries::demand, "the demand and its loss, asked for upstream"})};
    return type;
}

Type infiltrationLink() {
    return {.name = "infiltration_link",
            .tag = "LS",
            .codes = {11},
            .summary = "Swale or leaky drain: a fraction of the flow infiltrates.",
            .inputs = 1,
            .in = {kInflow},
            .out = {kOutflow},
            .parameters = {capacityCost("cost/step"),
                           operationCost("cost/year"),
                           {28, "infiltration_fraction", "-", "fraction of the flow that infiltrates"}},
            .potentials = {kOperation, kCapacity, kInfiltration}};
}

Type wastewaterTreatment() {
    return {.name = "wastewater_treatment",
            .tag = "CW",
            .codes = {25},
            .summary = "Passes all water on; within its capacity it lowers a quality of 10 or more to a tenth.",
            .inputs = 1,
            .in = {kInflow},
            .out = {kOutflow},
            .parameters = {{1, "treatment_capacity", "L/d", "volume that it can treat in a day"},
                           energyPerVolume(),
                           capacityCost("cost/step"),
                           operationCost("cost/year")},
            .potentials = {kEnergy, kOperation, kCapacity}};
}

Type treatmentLine() {
    return {.name = "treatment_line",
            .tag = "WP",
            .codes = {47},
            .summary = "Passes on its inflow less a loss, and reports what exceeds its capacity.",
            .inputs = 1,
            .in = {kInflow},
            .out = {kOutflow, withQuality(Quality::passed, {"excess", Carries::demand,
                                                            "inflow above the capacity; it is part of the outflow "
                                                            "too"})},
            .size = {"factor on the capacity cost", "-", 1},
            .parameters = {{1, "daily_capacity", "L/d", "volume that it can take in a day"},
                           lossFraction("fraction of the inflow that is lost"),
                           energyPerVolume(),
                           capacityCost("cost/step"),
                           operationCost("cost/year")},
            .potentials = {kEnergy, kCapacity, kOperation, kLosses}};
}

Type membrane() {
    return {
        .name = "membrane",
        .tag = "MN",
        .codes = {58},
        .summary = "Recovers seven tenths of what it can take as clean water; the rest leaves as concentrate.",
        .inputs = 1,
        .in = {kInflow},
        .out = {withQuality(Quality::passed,
                            {"permeate", Carries::water, "recovered, with a hundredth of the inflow's quality"}),
                withQuality(Quality::passed, {"concentrate", Carries::water, "the rest of the water and of the load"})},
        .parameters = {{1, "treatment_capacity", "L/d", "volume that it can take in a day"},
                       energyPerVolume(),
                       capacityCost("cost/step"),
                       operationCost("cost/year")},
        .potentials = {kEnergy, kOperation, kCapacity}};
}

Type treatmentPlant() {
    return {.name = "treatment_plant",
            .tag = "TP",
            .codes = {37},
            .summary =
                "Waterworks seen from the demand: asks upstream for demand and losses, reports what exceeds its "
                "capacity; with trace_sources it averages the qualities of its sources.",
            .inputs = 1,
            .in = {kDemand},
            .out = {{"request", Carries::demand, "the demand and its loss, asked for upstream"},
                    {"excess", Carries::demand, "part of the demand above the capacity"}},
            .size = {"units of capacity", "-", 1},
            .parameters = {{1, "daily_capacity", "L/d", "capacity of one unit in a day"},
                           lossFraction("loss as a fraction of the demand"),
                           energyPerVolume(),
                           capacityCost("cost/unit/step"),
                           operationCost("cost/unit/year")},
            .series = {kOwnTracedQuality},
            .potentials = {kEnergy, kLosses, kCapacity, kOperation}};
}

Type abstraction(std::string_view name, std::string_view tag, int code, std::string_view summary) {
    return {.name = name,
            .tag = tag,
            .codes = {code},
            .summary = summary,
            .inputs = 1,
            .in = {kDemand},
            .out = {{"request", Carries::demand, "the demand and its loss, asked of the source"},
                    {"excess", Carries::demand, "part of the demand above the capacity"}},
            .size = {"factor on the capacity cost", "-", 1},
            .parameters = {{1, "daily_capacity", "L/d", "volume that it can deliver in a day"},
                           lossFraction("loss as a fraction of the demand"),
                           energyPerVolume(),
                           capacityCost("cost/step"),
                           operationCost("cost/year")},
            .potentials = {kEnergy, kCapacity, kOperation, kLosses}};
}

Type well() {
    return {.name = "well",
            .tag = "GW",
            .codes = {38},
            .summary = "Takes water from the ground up to a yield; what it takes is booked as negative infiltration.",
            .inputs = 1,
            .in = {kDemand},
            .out = {{"unmet", Carries::demand, "part of the demand that it cannot meet"}},
            .size = {"area", "m2"},
            .parameters = {{1, "yield_per_area", "L/m2/d", "water that each m2 yields in a day"},
                           energyPerVolume(),
                           capacityCost("cost/m2/step"),
                           operationCost("cost/m2/year")},
            .potentials = {kEnergy, kCapacity, kOperation, kInfiltration}};
}

}  // namespace

std::vector<Type> treatmentAndLinks() {
    return {wastewaterTreatment(),
            treatmentLine(),
            membrane(),
            treatmentPlant(),
            link("gravity_link", "GL", 35, "Pipe that loses a fraction of its flow.", true),
            supplyLink(),
            link("sewer_link", "SG", 41, "Sewer that loses a fraction of its flow; no energy.", false),
            link("drainage_link", "DS", 42, "Drain that loses a fraction of its flow; no energy.", false),
            infiltrationLink(),
            well(),
            abstraction("abstraction", "AQ", 40,
                        "Takes water from a source up to a capacity; with stop_on_infeasible it stops the run when "
                        "asked for more."),
            abstraction("potable_treatment", "PT", 48, "The same model as abstraction under its own name.")};
}

}  // namespace kesto::tables
