// Catalogue: what reads, sets and switches on qualities.
#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

const Port kAskedFor{"demand", Carries::demand, "water asked for"};

Type qualitySwitch() {
    return {.name = "quality_switch",
            .tag = "QS",
            .family = "quality",
            .codes = {code::kQualitySwitch},
            .summary =
                "Sends a demand to its first output while the quality of its group's reservoir is below its size, else "
                "to the second.",
            .in = {kAskedFor},
            .out = {{"below", Carries::demand, "the demand while the quality is below the size"},
                    {"above", Carries::demand, "the demand while it is not"}},
            .size = Size{"quality that the reservoir's is compared with", ""},
            .parameters = kNothing,
            .series = kNothing,
            .potentials = kNothing,
            .balance = {Carries::demand, "demand = below + above", {}, Stored::nothing},
            .reservoirs = 1};
}

Type qualityFromReservoir() {
    return {.name = "quality_from_reservoir",
            .tag = "FC",
            .family = "quality",
            .codes = {code::kQualityFromReservoir},
            .summary = "Turns a demand into a flow with the quality of its group's reservoir.",
            .in = {kAskedFor},
            .out = {{"supply", Carries::water, "the quantity, with the reservoir's quality"},
                    {"request", Carries::demand, "the same quantity, as a demand"}},
            .size = kNothing,
            .parameters = kNothing,
            .series = kNothing,
            .potentials = kNothing,
            .balance = {Carries::water,
                        "request = supply",
                        {whole(Term::takenForDelivered,
                               "it supplies what is asked of it, whether or not the reservoir can", Amounts::in1)},
                        Stored::nothing,
                        {.asksBy = 2, .suppliesAsWater = true}},
            .reservoirs = 1,
            .reservoirsOptional = true};
}

Type qualitySetter() {
    return {.name = "quality_setter",
            .tag = "FL",
            .family = "quality",
            .codes = {code::kQualitySetter},
            .summary = "Passes a flow on with a quality given as a series.",
            .in = {kArrives},
            .out = {withQuality(Quality::own, passes("outflow", "the flow with the given quality"))},
            .size = kNothing,
            .parameters = kNothing,
            .series = {ofItsOwn(demand, "quality", "given_quality", "quality that it gives the flow", range::kQuality)},
            .potentials = kNothing,
            .balance = {Carries::same, "inflow = outflow", {}, Stored::nothing}};
}

}  // namespace

std::vector<Type> qualityUnits() {
    return {qualitySwitch(), qualityFromReservoir(), qualitySetter()};
}

}  // namespace kesto::tables
