// Soak-away, type 22 (CS): a store that seeps into the ground.
//
//   A        = max(Q + W - W s28 dt, 0)
//   overflow = max(A - V, 0)                 W' = min(V, A)
//   infiltration = s28 W dt
//
//   Q, q     input                                                      [vol/step], quality
//   W, W'    WatQuant of the own id, end of step k-1 and k              [vol]
//   V        size: capacity                                             [vol]
//   s12      capacity cost per unit of V     s13   operating cost per year
//   s28      infiltration rate                                          [1/d]
//   dt       TimeStep [d]                    m     multiplier of the potentials

#include <algorithm>

#include "components.h"
#include "components/lookup.h"

namespace {

struct Balance {
    float storage;
    float overflow;
};

Balance balance(float Q, float W, float s28, float dt, float V) {
    const float S = Q + W - W * s28 * dt;
    const float A = S >= 0.0F ? S : 0.0F;
    return {std::min(V, A), V - A > 0.0F ? 0.0F : A - V};
}

}  // namespace

void Cs_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<12, 13, 28>(Globals, row);
    if (!specifications) return;
    const auto [s12, s13, s28] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const auto W = readBefore(Globals, Series::WatQuant, id);
    if (!W) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    const float dt = Globals->TimeStep;
    if (!addPotential(Globals, Series::OprPot, g, s13 * *m * dt / 365.0F)) return;
    if (!addPotential(Globals, Series::CapPot, g, row->size * (s12 * *m))) return;
    addPotential(Globals, Series::InfPot, g, *m * s28 * *W * dt);
}

void Cs_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<28>(Globals, row);
    if (!specifications) return;
    const auto [s28] = *specifications;
    const auto W = readBefore(Globals, Series::WatQuant, id);
    if (!W) return;
    const auto [storage, overflow] = balance(in1.quantity, *W, s28, Globals->TimeStep, row->size);
    if (!store(Globals, Series::WatQuant, id, storage)) return;
    *out1 = {overflow, in1.quality};
}
