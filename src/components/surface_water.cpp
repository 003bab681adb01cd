// Surface water, type 39 (SW): a reservoir with inflow, demand and seepage through its surface, and one mixed quality.
//
//   a        = max(s30 + s31 V0 / 1e9 + s32 V0^2 / 1e18, 0)        surface
//   L        = max(0, a s34 + s33) dt                              seepage
//   B        = Q1 - D - L + V0
//   deficit  = max(-B, 0)        overflow = max(B - s1, 0)         V = max(0, min(s1, B))
//   C        = max((q1 Q1 + C0 V0) / (V0 + Q1), 0)                 for V0 > 0.1, else 0
//
//   Q1, q1   input 1: inflow                                                  [vol/step], quality
//   D        input 2: demand                                                  [vol/step]
//   V0, V    WatQuant of the own id, end of step k-1 and k                    [vol]
//   C0, C    WatQual of the own id, likewise
//   s1       capacity [vol]                  s12, s13   capacity cost per step, operating cost per year
//   s30-s32  surface by volume               s33, s34   seepage [vol/d], and per unit of surface
//   dt       TimeStep [d]
//
// The spill leaves with the mixed quality; without a spill output 2 is (0, 0). No multiplier scales a reservoir.

#include <algorithm>

#include "components.h"
#include "components/lookup.h"

namespace {

float surface(float V0, float s30, float s31, float s32) {
    const double a =
        static_cast<double>(s30) + static_cast<double>(s31 * V0) / 1e9 + static_cast<double>(s32 * V0 * V0) / 1e18;
    return a < 0.0 ? 0.0F : static_cast<float>(a);
}

float seepage(float a, float s33, float s34, float dt) {
    return std::max(0.0F, a * s34 + s33) * dt;
}

float mixedQuality(float Q1, float q1, float V0, float C0) {
    if (!(V0 > 0.1F)) return 0.0F;
    const float C = (q1 * Q1 + C0 * V0) / (V0 + Q1);
    return C < 0.0F ? 0.0F : C;
}

struct Balance {
    float volume;
    float deficit;
    float overflow;
};

Balance balance(float Q1, float D, float L, float V0, float s1) {
    const float B = Q1 - D - L + V0;
    const float deficit = B > 0.0F ? 0.0F : -B;
    const float overflow = s1 - B > 0.0F ? 0.0F : B - s1;
    return {std::max(0.0F, std::min(s1, B)), deficit, overflow};
}

std::optional<float> readSurface(AUEglobals* Globals, const ComponentRow* row, float V0) {
    const auto specifications = readSpecifications<30, 31, 32>(Globals, row);
    if (!specifications) return std::nullopt;
    const auto [s30, s31, s32] = *specifications;
    return surface(V0, s30, s31, s32);
}

}  // namespace

void Sw_Pots(std::int32_t id, AUEglobals* Globals, Signal) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<12, 13, 33, 34>(Globals, row);
    if (!specifications) return;
    const auto [s12, s13, s33, s34] = *specifications;
    const auto V0 = readBefore(Globals, Series::WatQuant, id);
    if (!V0) return;
    const auto a = readSurface(Globals, row, *V0);
    if (!a) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    const float dt = Globals->TimeStep;
    if (!addPotential(Globals, Series::CapPot, g, s12)) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * dt / 365.0F)) return;
    addPotential(Globals, Series::InfPot, g, seepage(*a, s33, s34, dt));
}

void Sw_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal in2, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 33, 34>(Globals, row);
    if (!specifications) return;
    const auto [s1, s33, s34] = *specifications;
    const auto V0 = readBefore(Globals, Series::WatQuant, id);
    if (!V0) return;
    const auto C0 = readBefore(Globals, Series::WatQual, id);
    if (!C0) return;
    const auto a = readSurface(Globals, row, *V0);
    if (!a) return;
    const float C = mixedQuality(in1.quantity, in1.quality, *V0, *C0);
    const float L = seepage(*a, s33, s34, Globals->TimeStep);
    const auto [volume, deficit, overflow] = balance(in1.quantity, in2.quantity, L, *V0, s1);
    if (!store(Globals, Series::WatQuant, id, volume) || !store(Globals, Series::WatQual, id, C)) return;
    *out1 = {deficit, -1.0F};
    *out2 = {overflow, overflow > 0.0F ? C : 0.0F};
}
