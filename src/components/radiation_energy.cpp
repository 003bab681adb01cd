// Radiation energy: collector, type 59 (PA), and net radiation, type 60 (NR).
//
//   PA   energy = -R 0.000278 A s55: what is delivered counts negative
//   NR   energy = (0.8 R - Rl) 0.000278 A
//
//   R          incoming short-wave radiation (solarrad)        [kJ/m2/d]
//   Rl         net outgoing long-wave radiation (solarrad)     [kJ/m2/d]
//   A          size: area                                      [m2]
//   s55        yield per unit of radiation
//   s12, s13   capacity cost, and operating cost per year, each per unit of A
//   dt         TimeStep, which must be one day                 m   multiplier
//
// 0.000278 kWh is one kJ; 0.8 is what is not reflected. Each evaluation adds one daily range of temperature to the 30
// that all radiation units share, so the order of components matters.

#include "components.h"
#include "components/lookup.h"
#include "components/temperatures.h"
#include "errors.h"
#include "solarrad.h"

namespace {

constexpr float kAbsorbed = 0.8F;
constexpr double kKilowattHours = 0.000278;  // of one kJ

float netEnergy(float shortWave, float longWave, float A) {
    return static_cast<float>(static_cast<double>(shortWave - longWave) * kKilowattHours * static_cast<double>(A));
}

float deliveredEnergy(float R, float A, float s55) {
    return static_cast<float>(static_cast<double>(R) * -kKilowattHours * static_cast<double>(A) *
                              static_cast<double>(s55));
}

bool isDaily(AUEglobals* Globals) {
    if (Globals->TimeStep == 1.0F) return true;
    error(Globals, text::kDailyRadiation);
    return false;
}

}  // namespace

void Pa_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    static DayTable Rpot{};
    if (!isDaily(Globals)) return;
    fillOnFirstUse(Globals, Rpot);
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const std::int32_t g = nint(row->key);
    const auto temperatures = readTemperatures(Globals, g);
    if (!temperatures) return;
    const auto specifications = readSpecifications<12, 13, 55>(Globals, row);
    if (!specifications) return;
    const auto [s12, s13, s55] = *specifications;
    const float R = directbeamsolar(Globals, Rpot, temperatures->tMin, temperatures->tMax);
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m || g < 1) return;
    const float A = row->size;
    if (!addPotential(Globals, Series::NrgPot, g, *m * deliveredEnergy(R, A, s55))) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * A * Globals->TimeStep / 365.0F * *m)) return;
    addPotential(Globals, Series::CapPot, g, *m * (A * s12));
}

void Nr_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    static DayTable Rpot{};
    if (!isDaily(Globals)) return;
    fillOnFirstUse(Globals, Rpot);
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const std::int32_t g = nint(row->key);
    const auto temperatures = readTemperatures(Globals, g);
    if (!temperatures) return;
    const auto [tMin, tMax] = *temperatures;
    const float shortWave = directbeamsolar(Globals, Rpot, tMin, tMax) * kAbsorbed;
    // DELIBERATE: the absorbed part divided again, not the value that it came from.
    const float longWave = netlongwave(Globals, Rpot, shortWave / kAbsorbed, tMin, tMax);
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m || g < 1) return;
    addPotential(Globals, Series::NrgPot, g, *m * netEnergy(shortWave, longWave, row->size));
}
