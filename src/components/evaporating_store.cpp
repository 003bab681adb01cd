// Daily evaporating store, type 46 (BG): a green roof or a planted bed that rain fills and that drains and evaporates.
//
//   E     = 0.0023 R / 2450 ((Tmin + Tmax) / 2 + 17.8) max(Tmax - Tmin, 0)^0.5
//   X     = P + S - k28 S dt - E (1 - f27)
//   spill = max(X - Smax, 0)        shortfall = -min(0, X)        S' = X - spill - min(0, X)
//   out1  = (spill A, q25)          out2      = (shortfall A, -1)
//   infiltration = (S k28 dt - f27 E) m A       evaporation = m E A       energy = -0.683 m E A
//
//   E          reference evapotranspiration: Hargreaves and Samani (1985), Applied Engineering in Agriculture 1, 96-99,
//              with 2450 kJ/kg of heat of vaporisation                                             [mm]
//   R          extraterrestrial radiation of the day (solarrad)                                    [kJ/m2/d]
//   P          rainfall of the key id at this step                                                 [mm]
//   Tmin,Tmax  temperatures of the key id at this step                                             [degC]
//   S, S'      WatQuant of the own id, end of step k-1 and k                                       [mm]
//   A          size: area                                                                          [m2]
//   Smax       specification 1: capacity [mm]         k28   specification 28: drainage rate [1/d]
//   q25        specification 25: quality of the spill
//   f27        specification 27: fraction of E that does not leave the store
//   s12, s13   capacity cost, and operating cost per year, each per unit of A
//   dt         TimeStep, which must be one day        m     multiplier of the potentials
//
// 0.683 kWh is the heat of vaporisation of one litre: evaporation cools.

#include <algorithm>
#include <cmath>

#include "components.h"
#include "components/lookup.h"
#include "components/temperatures.h"
#include "errors.h"
#include "solarrad.h"

namespace {

constexpr double kEnergyOfEvaporation = 0.683;

float hargreaves(float R, float tMin, float tMax) {
    const auto low = static_cast<double>(tMin);
    const auto high = static_cast<double>(tMax);
    return static_cast<float>(0.0023 * static_cast<double>(R) / 2450.0 * ((low + high) * 0.5 + 17.8) *
                              std::pow(std::max(high - low, 0.0), 0.5));
}

struct Balance {
    float level;
    float spill;
    float shortfall;
};

Balance balance(float P, float S, float k28, float dt, float E, float f27, float Smax) {
    const float X = P + S - k28 * S * dt - E * (1.0F - f27);
    const float spill = std::max(X - Smax, 0.0F);
    const float below = std::min(0.0F, X);
    return {X - spill - below, spill, -below};
}

bool isDaily(AUEglobals* Globals) {
    if (Globals->TimeStep == 1.0F) return true;
    error(Globals, text::kDailyStore);
    return false;
}

std::optional<float> readEvaporation(AUEglobals* Globals, const DayTable& Rpot, std::int32_t key) {
    const auto temperatures = readTemperatures(Globals, key);
    if (!temperatures) return std::nullopt;
    return hargreaves(insolationofthisstep(Globals, Rpot), temperatures->tMin, temperatures->tMax);
}

}  // namespace

void Bg_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    static DayTable Rpot{};
    if (!isDaily(Globals)) return;
    fillOnFirstUse(Globals, Rpot);
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<12, 13, 27, 28>(Globals, row);
    if (!specifications) return;
    const auto [s12, s13, f27, k28] = *specifications;
    const std::int32_t g = nint(row->key);
    const auto E = readEvaporation(Globals, Rpot, g);
    if (!E) return;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const auto S = readBefore(Globals, Series::WatQuant, id);
    if (!S || g < 1) return;
    const float A = row->size;
    const float dt = Globals->TimeStep;
    const double heat = static_cast<double>(*E * -*m * A) * kEnergyOfEvaporation;
    if (!addPotential(Globals, Series::InfPot, g, (*S * k28 * dt - f27 * *E) * *m * A)) return;
    if (!addPotential(Globals, Series::EvaPot, g, *m * *E * A)) return;
    if (!addPotential(Globals, Series::NrgPot, g, heat)) return;
    if (!addPotential(Globals, Series::CapPot, g, s12 * *m * A)) return;
    addPotential(Globals, Series::OprPot, g, dt * (*m * A * s13) / 365.0F);
}

void Bg_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1, Signal* out2) {
    static DayTable Rpot{};
    if (!isDaily(Globals)) return;
    fillOnFirstUse(Globals, Rpot);
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 25, 27, 28>(Globals, row);
    if (!specifications) return;
    const auto [Smax, q25, f27, k28] = *specifications;
    const std::int32_t g = nint(row->key);
    const auto S = readBefore(Globals, Series::WatQuant, id);
    if (!S) return;
    const auto P = readNow(Globals, Series::Rainfall, g);
    if (!P) return;
    const auto E = readEvaporation(Globals, Rpot, g);
    if (!E) return;
    const auto [level, spill, shortfall] = balance(*P, *S, k28, Globals->TimeStep, *E, f27, Smax);
    *out1 = {spill * row->size, q25};
    *out2 = {shortfall * row->size, -1.0F};
    store(Globals, Series::WatQuant, id, level);
}
