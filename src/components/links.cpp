// Conveyance links with losses: types 35 (GL), 27 (PL), 41 (SG), 42 (DS) and 11 (LS).
//
//   GL, SG, DS   out = (1 - s2) Q
//   PL           out = (1 + s2) Q
//   LS           out = (1 - s28) Q
//
//   Q     quantity of the input; its quality passes unchanged
//   s2    fraction of the flow that is lost
//   s3    energy per unit of flow       [kWh/vol]
//   s12   capacity cost per step
//   s13   operating cost per year
//   s28   fraction of the flow that infiltrates
//   m     multiplier of the potentials
//
// Links keep no state, and no factor is clamped: a loss above 1 turns the flow round.

#include "components.h"
#include "components/lookup.h"

namespace {

float reduced(float fraction, float Q) {
    return (1.0F - fraction) * Q;
}

// DELIBERATE: the link adds its loss fraction, so that a demand travelling through it grows by what it will lose.
float increased(float fraction, float Q) {
    return (1.0F + fraction) * Q;
}

// Applies a formula of one specification to the flow.
template <int Number>
void convey(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, float (*formula)(float, float)) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<Number>(Globals, row);
    if (!specifications) return;
    *out1 = {formula(specifications->front(), in1.quantity), in1.quality};
}

}  // namespace

void Gl_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<2, 3, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s2, s3, s12, s13] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    const float Q = in1.quantity;
    if (!addPotential(Globals, Series::NrgPot, g, s3 * Q * *m)) return;
    if (!addPotential(Globals, Series::CapPot, g, s12 * *m)) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * *m * Globals->TimeStep / 365.0F)) return;
    addPotential(Globals, Series::LosPot, g, *m * (Q * s2));
}

void Sg_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<2, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s2, s12, s13] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    if (!addPotential(Globals, Series::CapPot, g, s12 * *m)) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * *m * Globals->TimeStep / 365.0F)) return;
    addPotential(Globals, Series::LosPot, g, *m * s2 * in1.quantity);
}

void Ls_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<12, 13, 28>(Globals, row);
    if (!specifications) return;
    const auto [s12, s13, s28] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * Globals->TimeStep / 365.0F * *m)) return;
    if (!addPotential(Globals, Series::CapPot, g, s12 * *m)) return;
    addPotential(Globals, Series::InfPot, g, *m * (s28 * in1.quantity));
}

void Pl_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1) {
    Gl_Pots(id, Globals, Mult, in1);
}

void Ds_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1) {
    Sg_Pots(id, Globals, Mult, in1);
}

void Gl_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    convey<2>(id, Globals, in1, out1, reduced);
}

void Pl_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    convey<2>(id, Globals, in1, out1, increased);
}

void Ls_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    convey<28>(id, Globals, in1, out1, reduced);
}

void Sg_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    Gl_Outs(id, Globals, in1, out1);
}

void Ds_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    Gl_Outs(id, Globals, in1, out1);
}
