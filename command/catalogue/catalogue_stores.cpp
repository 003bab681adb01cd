// Catalogue: what keeps water from one step to the next.
#include <algorithm>

#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

double deficit(const BalanceStep& s) {
    return s.out[0];
}

Type tank() {
    return {.name = "tank",
            .tag = "TN",
            .family = "tank",
            .codes = {code::kTank},
            .summary = "Storage tank: serves a demand from inflow and storage, spills what it cannot hold.",
            .in = {kInflow, kDemand},
            .out = {kDeficit, kOverflow},
            .size = Size{"capacity", "L", range::kStore},
            .parameters = {capacityCost("cost/L/step"), operationCost("cost/year")},
            .series = {kOwnVolume},
            .potentials = {kCapacity, kOperation},
            .balance = {Carries::water,
                        "inflow + S = (demand - deficit) + overflow + S'",
                        {difference(Term::served, "demand less deficit", Amounts::in2, Amounts::out1)},
                        Stored::litres},
            .service = {2, deficit, Amounts::out1}};
}

double infiltratedFromSoakaway(const BalanceStep& s) {
    return std::min(s.before * s.parameter(spec::kInfiltrationRate) * s.timeStep, s.before + s.in[0]);
}

Type soakaway() {
    return {
        .name = "soakaway",
        .tag = "CS",
        .family = "soakaway",
        .codes = {code::kSoakaway},
        .summary = "Soak-away: holds water up to a capacity and lets a share of it infiltrate each day.",
        .in = {kInflow},
        .out = {withQuality(Quality::passed, kOverflow)},
        .size = Size{"capacity", "L", range::kStore},
        .parameters = {capacityCost("cost/L/step"),
                       operationCost("cost/year"),
                       {spec::kInfiltrationRate, "infiltration_rate", "1/d",
                        "share of the stored volume that infiltrates", range::kRate}},
        .series = {kOwnVolume},
        .potentials = {kOperation, kCapacity, kInfiltration},
        .balance = {Carries::water,
                    "inflow + S = overflow + infiltration + S'",
                    {computed(Term::infiltrated, "a share of what it holds", infiltratedFromSoakaway, Amounts::in1)},
                    Stored::litres}};
}

double seepage(const BalanceStep& s) {
    const double v = s.before / 1e9;
    const double curve = s.parameter(spec::kHeadConstant) + s.parameter(spec::kHeadLinear) * v +
                         s.parameter(spec::kHeadQuadratic) * v * v;
    const double rate = std::max(curve, 0.0) * s.parameter(spec::kSeepagePerHead) + s.parameter(spec::kSeepageConstant);
    return std::max(rate, 0.0) * s.timeStep;
}

double seepedFromNothing(const BalanceStep& s) {
    return std::max(s.out[0] - s.in[1], 0.0);
}

double servedFromReservoir(const BalanceStep& s) {
    return std::max(s.in[1] - s.out[0], 0.0);
}

double deficitOfReservoir(const BalanceStep& s) {
    return std::min(s.out[0], s.in[1]);
}

Type reservoir() {
    return {
        .name = "reservoir",
        .tag = "SW",
        .family = "reservoir",
        .codes = {code::kReservoir},
        .summary =
            "Surface-water store with a mixed quality, a head curve and seepage. Units of its group find it: "
            "hydropower, pumped_storage, quality_switch, quality_from_reservoir.",
        .in = {kInflow, kDemand},
        .out = {kDeficit, withQuality(Quality::mixed, kOverflow)},
        .size = kNothing,
        .parameters =
            {{spec::kStorageCapacity, "storage_capacity", "L", "volume that it can hold", range::kStore},
             capacityCost("cost/step"),
             operationCost("cost/year"),
             {spec::kHeadConstant, "head_constant", "m", "head curve: head of the empty store", range::kAny, 0},
             {spec::kHeadLinear, "head_linear", "m/(1e9 L)", "head curve: linear term", range::kAny, 0},
             {spec::kHeadQuadratic, "head_quadratic", "m/(1e9 L)2", "head curve: quadratic term", range::kAny, 0},
             {spec::kSeepageConstant, "seepage_constant", "L/d", "seepage at head 0", range::kAny, 0},
             {spec::kSeepagePerHead, "seepage_per_head", "L/d/m", "seepage for each unit of head", range::kAny, 0}},
        .series = {kOwnVolume, kOwnQuality},
        .potentials = {kCapacity, kOperation, kInfiltration},
        .balance = {Carries::water,
                    "inflow + S + seepage that was not there = (demand - deficit) + overflow + seepage + S'",
                    {computed(Term::takenForDelivered, "it seeps water that it does not hold", seepedFromNothing,
                              Amounts::in2 | Amounts::out1),
                     computed(Term::infiltrated, "the seepage", seepage),
                     computed(Term::served, "demand less deficit", servedFromReservoir, Amounts::in2 | Amounts::out1)},
                    Stored::litres,
                    {.asksBy = 1}},
        .service = {2, deficitOfReservoir, Amounts::in2 | Amounts::out1}};
}

double lackOfServiceReservoir(const BalanceStep& s) {
    return std::max(s.in[0] - s.before - s.out[0], 0.0);
}

Type serviceReservoir() {
    return {.name = "service_reservoir",
            .tag = "RS",
            .family = "receiving_units",
            .codes = {code::kServiceReservoir},
            .summary =
                "Service reservoir, as a water tower: serves a demand from its store and asks upstream for the refill; "
                "with trace_sources it mixes the qualities of its sources.",
            .in = {kDemand},
            .out = {{"request", Carries::demand, "refill asked for upstream"}},
            .size = Size{"capacity", "L", range::kStore},
            .parameters = {capacityCost("cost/L/step"),
                           {spec::kRefillRate, "refill_rate", "1/d",
                            "share of the capacity that can be refilled in a day", range::kNotNegative}},
            .series = {kOwnVolume, kOwnTracedQuality},
            .potentials = {kCapacity},
            .balance = {Carries::water,
                        "refill + S + lack = demand + S'",
                        {whole(Term::takenForDelivered, "its refill", Amounts::out1),
                         computed(Term::created, "it serves every demand in full, also what it does not hold",
                                  lackOfServiceReservoir, Amounts::in1 | Amounts::out1),
                         whole(Term::served, "every demand, in full", Amounts::in1)},
                        Stored::litres},
            .service = {1, lackOfServiceReservoir, Amounts::in1 | Amounts::out1}};
}

Type detentionBasin() {
    return {.name = "detention_basin",
            .tag = "DT",
            .family = "detention_basin",
            .codes = {code::kDetentionBasin},
            .summary = "Basin whose outflow grows with its level to the power 1.5, as over a weir.",
            .in = {kInflow},
            .out = {withQuality(Quality::passed,
                                {"outflow", Carries::water, "what leaves over the outlet, with the inflow's quality"})},
            .size = Size{"area", "m2", range::kPositive},
            .parameters = {{spec::kOutletCoefficient, "outlet_coefficient", "mm^-0.5/min",
                            "outflow depth for each mm^1.5 of level", range::kNotNegative}},
            .series = {kOwnDepth},
            .potentials = kNothing,
            .balance = {Carries::water, "inflow + S = outflow + S'", {}, Stored::depth},
            .peakOf = 1};
}

}  // namespace

std::vector<Type> stores() {
    return {tank(), soakaway(), serviceReservoir(), reservoir(), detentionBasin()};
}

}  // namespace kesto::tables
