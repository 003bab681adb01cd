// Catalogue: roofs, ground and plants that rain falls on.
#include <algorithm>

#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

Type imperviousSurface() {
    return {.name = "impervious_surface",
            .tag = "IM",
            .family = "runoff_surfaces",
            .codes = {code::kImperviousSurface},
            .summary = "Roof or pavement: a fixed fraction of the rain evaporates, the rest runs off at once.",
            .in = kNothing,
            .out = {{"runoff", Carries::water, "rain that runs off, with water_quality"}},
            .size = Size{"area", "m2", range::kArea},
            .parameters = {waterQuality("quality of the runoff"),
                           {spec::kEvaporationFraction, "evaporation_fraction", "-",
                            "fraction of the rain that evaporates", range::kFraction}},
            .series = {ofGroup(rainfall)},
            .potentials = {kEvaporation},
            .balance = {Carries::water,
                        "rain = runoff + evaporation",
                        {whole(Term::rain, "rain on its area", Amounts::rain),
                         share(Term::evaporated, "a fraction of the rain", Amounts::rain, spec::kEvaporationFraction)},
                        Stored::nothing}};
}

// What a bucket loses at a rate: when the rates ask for more than rain and store hold, they share what is there.
double lostAtRate(const BalanceStep& s, int rate) {
    const double held = s.before * s.size;
    const double rates = s.parameter(spec::kEvaporationRate) + s.parameter(spec::kInfiltrationRate);
    if (rates == 0) return 0;
    return std::min(held * rates * s.timeStep, s.of(Amounts::rain) + held) * s.parameter(rate) / rates;
}

double evaporatedFromBucket(const BalanceStep& s) {
    return lostAtRate(s, spec::kEvaporationRate);
}

double infiltratedFromBucket(const BalanceStep& s) {
    return lostAtRate(s, spec::kInfiltrationRate);
}

Type perviousSurface() {
    return {
        .name = "pervious_surface",
        .tag = "PV",
        .family = "runoff_surfaces",
        .codes = {code::kPerviousSurface},
        .summary = "Ground that holds rain up to a depth, loses a share of it each day and runs off what overflows.",
        .in = kNothing,
        .out = {{"runoff", Carries::water, "what the store cannot hold, with water_quality"}},
        .size = Size{"area", "m2", range::kArea},
        .parameters = {{spec::kStorageDepth, "storage_depth", "mm", "depth that the surface can hold", range::kStore},
                       waterQuality("quality of the runoff"),
                       {spec::kEvaporationRate, "evaporation_rate", "1/d", "share of the stored depth that evaporates",
                        range::kRate},
                       {spec::kInfiltrationRate, "infiltration_rate", "1/d",
                        "share of the stored depth that infiltrates", range::kRate}},
        .series = {ofGroup(rainfall), kOwnDepth},
        .potentials = {kInfiltration, kEvaporation},
        .balance = {Carries::water,
                    "rain + S = runoff + evaporation + infiltration + S'",
                    {whole(Term::rain, "rain on its area", Amounts::rain),
                     computed(Term::evaporated, "a share of what it holds", evaporatedFromBucket),
                     computed(Term::infiltrated, "a share of what it holds", infiltratedFromBucket)},
                    Stored::depth}};
}

// Hargreaves and Samani [L].
double evapotranspiration(const BalanceStep& s) {
    const double mean = (s.temperatureMin + s.temperatureMax) / 2;
    const double range = std::max(s.temperatureMax - s.temperatureMin, 0.0);
    return 0.0023 * s.insolation / 2450 * (mean + 17.8) * std::sqrt(range) * s.size;
}

double evaporatedFromGround(const BalanceStep& s) {
    return evapotranspiration(s) * s.parameter(spec::kGroundwaterEvaporationFraction);
}

double drained(const BalanceStep& s) {
    return s.before * s.size * s.parameter(spec::kInfiltrationRate) * s.timeStep;
}

Type greenArea() {
    return {.name = "green_area",
            .tag = "BG",
            .family = "green_area",
            .codes = {code::kGreenArea},
            .summary =
                "Green roof, lawn or pond: rain fills it, drainage and evaporation (Hargreaves) empty it. Daily "
                "steps only.",
            .in = kNothing,
            .out = {{"runoff", Carries::water, "spill above the storage depth, with water_quality"},
                    {"shortfall", Carries::demand, "water that it lacks, as a demand for irrigation"}},
            .size = Size{"area", "m2", range::kArea},
            .parameters = {{spec::kStorageDepth, "storage_depth", "mm", "depth that the store can hold", range::kStore},
                           capacityCost("cost/m2/step"),
                           operationCost("cost/m2/year"),
                           waterQuality("quality of the runoff"),
                           {spec::kGroundwaterEvaporationFraction, "groundwater_evaporation_fraction", "-",
                            "fraction of the evaporation that is drawn from the ground instead of the store",
                            range::kFraction, 0},
                           {spec::kInfiltrationRate, "infiltration_rate", "1/d",
                            "share of the stored depth that drains", range::kRate}},
            .series = {ofGroup(rainfall), ofGroup(temperatureMin), ofGroup(temperatureMax), kOwnDepth},
            .potentials = {kInfiltration, kEvaporation, kEnergy, kCapacity, kOperation},
            .balance =
                {Carries::water,
                 "rain + groundwater + S + shortfall = runoff + evaporation + drainage + S'",
                 {whole(Term::rain, "rain on its area", Amounts::rain),
                  computed(Term::drawn, "the fraction of the evaporation that the ground gives", evaporatedFromGround),
                  whole(Term::takenForDelivered, "it evaporates and drains water that it does not hold", Amounts::out2),
                  computed(Term::evaporated, "by the weather, whether or not it holds as much", evapotranspiration),
                  computed(Term::infiltrated, "a share of what it holds", drained)},
                 Stored::depth,
                 {.asksBy = 2}},
            .dailyOnly = true,
            .usesLatitude = true,
            .booksHeat = true};
}

// Thornthwaite, of one square metre; rounded to single as the engine rounds it. C libraries differ in the last digit of
// the double.
double soilEvaporation(const BalanceStep& s) {
    const auto relative = static_cast<double>(10.0F * static_cast<float>(s.temperature) / 60.0F);
    const auto potential = static_cast<float>(16 * std::pow(relative, 1.7) * 12 / 360 * s.timeStep);
    return s.parameter(spec::kEvaporationFactor) * static_cast<double>(potential);
}

double entering(const BalanceStep& s) {
    return s.parameter(spec::kRainEntryFraction) * s.rain;
}

double soilLevel(const BalanceStep& s) {
    const double filled = std::max(entering(s) - soilEvaporation(s), 0.0) + s.before;
    return std::min(filled, s.parameter(spec::kStorageDepth));
}

double soilDrainage(const BalanceStep& s) {
    return s.parameter(spec::kInfiltrationRate) * soilLevel(s) * s.timeStep;
}

double drainedBeyondStore(const BalanceStep& s) {
    const double depth = s.parameter(spec::kStorageDepth), level = soilLevel(s);
    const double above = std::max(level - s.parameter(spec::kThresholdFraction) * depth, 0.0);
    const double outflow = s.timeStep * s.parameter(spec::kOutflowRate) * above;
    return std::max(soilDrainage(s) + outflow - level, 0.0);
}

double rainOnSoil(const BalanceStep& s) {
    return s.rain;
}

double notEntering(const BalanceStep& s) {
    return s.rain - entering(s);
}

double evaporatedFromSoil(const BalanceStep& s) {
    return std::min(soilEvaporation(s), entering(s));
}

Type soilStore() {
    return {
        .name = "soil_store",
        .tag = "TH",
        .family = "soil_store",
        .codes = {code::kSoilStore},
        .summary =
            "Soil water per unit area: rain enters, evaporation (Thornthwaite) and drainage leave. Its "
            "outflow is a depth: 1 mm is 1 L from each m2. Temperatures below 0 degC make it not a number.",
        .in = kNothing,
        .out = {{"runoff", Carries::water, "outflow and spill per unit area, with water_quality", "mm"}},
        .size = kNothing,
        .parameters = {{spec::kStorageDepth, "storage_depth", "mm", "depth that the soil can hold", range::kStore},
                       waterQuality("quality of the outflow"),
                       {spec::kInfiltrationRate, "infiltration_rate", "1/d",
                        "share of the stored depth that drains to the ground", range::kRateOfPart},
                       {spec::kOutflowRate, "outflow_rate", "1/d",
                        "share of the depth above the threshold that flows out", range::kRateOfPart},
                       {spec::kRainEntryFraction, "rain_entry_fraction", "-",
                        "fraction of the rain that enters the soil", range::kFraction, 1},
                       {spec::kEvaporationFactor, "evaporation_factor", "-", "factor on the evaporation",
                        range::kNotNegative, 1},
                       {spec::kThresholdFraction, "threshold_fraction", "-",
                        "threshold of the outflow as a fraction of the depth", range::kRatio}},
        .series = {ofGroup(rainfall), ofGroup(temperature), kOwnDepth},
        .potentials = {kInfiltration},
        .balance = {Carries::water,
                    "rain + S = runoff + evaporation + drainage + what does not enter + S'",
                    {computed(Term::rain, "rain, counted for one square metre", rainOnSoil),
                     computed(Term::created, "drainage and outflow together exceed what it holds", drainedBeyondStore),
                     computed(Term::evaporated, "at most the rain that enters", evaporatedFromSoil),
                     computed(Term::infiltrated, "the drainage", soilDrainage),
                     computed(Term::lost, "rain that does not enter", notEntering)},
                    Stored::depthOfOneMetre2},
        .booksDepth = true};
}

}  // namespace

std::vector<Type> surfaces() {
    return {imperviousSurface(), perviousSurface(), greenArea(), soilStore()};
}

}  // namespace kesto::tables
