// Catalogue: pipes, sewers and swales, with what they lose.
#include "catalogue_tables.h"

namespace kesto::tables {

namespace {

Type link(std::string_view name, std::string_view tag, int code, std::string_view summary, bool energy) {
    Type type{.name = name,
              .tag = tag,
              .family = "links",
              .codes = {code},
              .summary = summary,
              .in = {kInflow},
              .out = {kOutflow},
              .size = kNothing,
              .parameters = {lossFraction("fraction of the flow that is lost"), capacityCost("cost/step"),
                             operationCost("cost/year")},
              .series = kNothing,
              .potentials = {kCapacity, kOperation, kLosses},
              .balance = {Carries::water,
                          "inflow = outflow + loss",
                          {share(Term::lost, "a fraction of the flow", Amounts::in1, spec::kLossFraction)},
                          Stored::nothing},
              .peakOf = 1};
    if (energy) {
        type.parameters.insert(type.parameters.begin() + 1, energyPerVolume());
        type.potentials.insert(type.potentials.begin(), kEnergy);
    }
    return type;
}

Type supplyLink() {
    Type type =
        link("supply_link", "PL", code::kSupplyLink,
             "Pipe seen from its end: a demand that travels through it grows by what the pipe will lose.", true);
    type.in = {kDemand};
    // A pipe can lose more than it delivers.
    type.parameters.front() = lossFraction("fraction of the demand that is lost", range::kRatio);
    type.out = {
        withQuality(Quality::passed, {"request", Carries::demand, "the demand and its loss, asked for upstream"})};
    type.balance.carries = Carries::demand;
    type.balance.identity = "demand + loss = request";
    return type;
}

Type infiltrationLink() {
    return {.name = "infiltration_link",
            .tag = "LS",
            .family = "links",
            .codes = {code::kInfiltrationLink},
            .summary = "Swale or leaky drain: a fraction of the flow infiltrates.",
            .in = {kInflow},
            .out = {kOutflow},
            .size = kNothing,
            .parameters = {capacityCost("cost/step"),
                           operationCost("cost/year"),
                           {spec::kInfiltrationFraction, "infiltration_fraction", "-",
                            "fraction of the flow that infiltrates", range::kFraction}},
            .series = kNothing,
            .potentials = {kOperation, kCapacity, kInfiltration},
            .balance = {Carries::water,
                        "inflow = outflow + infiltration",
                        {share(Term::infiltrated, "a fraction of the flow", Amounts::in1, spec::kInfiltrationFraction)},
                        Stored::nothing},
            .peakOf = 1};
}

}  // namespace

std::vector<Type> links() {
    return {
        link("gravity_link", "GL", code::kGravityLink, "Pipe that loses a fraction of its flow.", true), supplyLink(),
        link("sewer_link", "SG", code::kSewerLink, "Sewer that loses a fraction of its flow; no energy.", false),
        link("drainage_link", "DS", code::kDrainageLink, "Drain that loses a fraction of its flow; no energy.", false),
        infiltrationLink()};
}

}  // namespace kesto::tables
