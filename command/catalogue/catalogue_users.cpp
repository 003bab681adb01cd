// Catalogue: what uses water, and the surfaces that rain falls on.
#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

Type appliance() {
    return {.name = "appliance",
            .tag = "OU",
            .codes = {1, 2, 4, 5, 6, 7, 8, 9, 10},
            .summary =
                "A use of water by a group. What a kind stands for is up to the model, but kinds 9 and 10 do not "
                "depend on the people present, and the water of kind 9 goes into the ground.",
            .out = {{"wastewater", Carries::water, "what is released, with water_quality"},
                    {"demand", Carries::demand, "what is drawn"}},
            .parameters = {{1, "volume_per_use", "L", "water drawn for one use"},
                           {3, "energy_per_use", "kWh", "energy spent on one use", 0},
                           capacityCost("cost/step"),
                           operationCost("cost/use"),
                           waterQuality("quality of the water released")},
            .series = {ofGroup(uses), ofGroup(occupancy), ofGroup(demandFluctuation)},
            .potentials = {kEnergy, kOperation, kCapacity, kInfiltration}};
}

Type imperviousSurface() {
    return {.name = "impervious_surface",
            .tag = "IM",
            .codes = {28},
            .summary = "Roof or pavement: a fixed fraction of the rain evaporates, the rest runs off at once.",
            .out = {{"runoff", Carries::water, "rain that runs off, with water_quality"}},
            .size = {"area", "m2"},
            .parameters = {waterQuality("quality of the runoff"),
                           {27, "evaporation_fraction", "-", "fraction of the rain that evaporates"}},
            .series = {ofGroup(rainfall)},
            .potentials = {kEvaporation}};
}

Type perviousSurface() {
    return {
        .name = "pervious_surface",
        .tag = "PV",
        .codes = {29},
        .summary = "Ground that holds rain up to a depth, loses a share of it each day and runs off what overflows.",
        .out = {{"runoff", Carries::water, "what the store cannot hold, with water_quality"}},
        .size = {"area", "m2"},
        .parameters = {{1, "storage_depth", "mm", "depth that the surface can hold"},
                       waterQuality("quality of the runoff"),
                       {27, "evaporation_rate", "1/d", "share of the stored depth that evaporates"},
                       {28, "infiltration_rate", "1/d", "share of the stored depth that infiltrates"}},
        .series = {ofGroup(rainfall), kOwnDepth},
        .potentials = {kInfiltration, kEvaporation}};
}

Type greenArea() {
    return {.name = "green_area",
            .tag = "BG",
            .codes = {46},
            .summary =
                "Green roof, lawn or pond: rain fills it, drainage and evaporation (Hargreaves) empty it. Daily "
                "steps only.",
            .out = {{"runoff", Carries::water, "spill above the storage depth, with water_quality"},
                    {"shortfall", Carries::demand, "water that it lacks, as a demand for irrigation"}},
            .size = {"area", "m2"},
            .parameters = {{1, "storage_depth", "mm", "depth that the store can hold"},
                           capacityCost("cost/m2/step"),
                           operationCost("cost/m2/year"),
                           waterQuality("quality of the runoff"),
                           {27, "groundwater_evaporation_fraction", "-",
                            "fraction of the evaporation that is drawn from the ground instead of the store", 0},
                           {28, "infiltration_rate", "1/d", "share of the stored depth that drains"}},
            .series = {ofGroup(rainfall), ofGroup(temperatureMin), ofGroup(temperatureMax), kOwnDepth},
            .potentials = {kInfiltration, kEvaporation, kEnergy, kCapacity, kOperation},
            .dailyOnly = true,
            .usesLatitude = true};
}

Type soilStore() {
    return {.name = "soil_store",
            .tag = "TH",
            .codes = {62},
            .summary =
                "Soil water per unit area: rain enters, evaporation (Thornthwaite) and drainage leave. Its "
                "outflow is a depth: 1 mm is 1 L from each m2. Temperatures below 0 degC make it not a number.",
            .out = {{"runoff", Carries::water, "outflow and spill per unit area, with water_quality", "mm"}},
            .parameters = {{1, "storage_depth", "mm", "depth that the soil can hold"},
                           waterQuality("quality of the outflow"),
                           {28, "infiltration_rate", "1/d", "share of the stored depth that drains to the ground"},
                           {57, "outflow_rate", "1/d", "share of the depth above the threshold that flows out"},
                           {58, "rain_entry_fraction", "-", "fraction of the rain that enters the soil", 1},
                           {59, "evaporation_factor", "-", "factor on the evaporation", 1},
                           {60, "threshold_fraction", "-", "threshold of the outflow as a fraction of the depth"}},
            .series = {ofGroup(rainfall), ofGroup(temperature), kOwnDepth},
            .potentials = {kInfiltration},
            .booksDepth = true};
}

Type demandSource() {
    return {.name = "demand_source",
            .tag = "IN",
            .codes = {45},
            .summary = "A demand given as a series, taken to a percentage.",
            .out = {{"demand", Carries::demand, "the series times the percentage"}},
            .size = {"percentage of the series", "%", 100},
            .series = {ofItsOwn(demand)}};
}

}  // namespace

std::vector<Type> usersAndSurfaces() {
    return {appliance(), imperviousSurface(), perviousSurface(), greenArea(), soilStore(), demandSource()};
}

}  // namespace kesto::tables
