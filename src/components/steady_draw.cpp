// Steady-draw storage, types 3 (LT), 23 (CR) and 24 (CG), and treatment within a daily capacity, type 25 (CW).
//
// Storage: a fixed volume is drawn every day, what exceeds the capacity is spilled, and the pollutants that came in and
// were not drawn leave with the spill.
//
//   draw     = dt s1                           S        = W + Q - draw
//   supplied = draw - max(-S, 0)               overflow = max(S - V, 0)
//   W'       = min(max(S, 0), V)
//   out1     = (supplied, q p)                 out2     = (overflow, q (Q - p supplied) / overflow)
//
// Treatment: the flow passes, and water of quality 10 or worse has a tenth of it after treatment.
//
//   out      = (Q, q)                                                  for q < 10
//              (Q, 0.1 q)                                              for cap > Q,  cap = dt s1
//              (Q, (q (0.1 cap) + (Q - cap) q) / Q)                    else
//
//   Q, q     input                                                                  [vol/step], quality
//   W, W'    WatQuant of the own id, end of step k-1 and k                          [vol]
//   V        size: capacity                                                         [vol]
//   s1       volume drawn, or treated                                               [vol/d]
//   s3       energy: LT per day, else per unit of volume                            [kWh]
//   s12      capacity cost per step          s13   operating cost per year
//   dt       TimeStep [d]                    m     multiplier of the potentials; treatment (CW) has none
//   p        share of the pollutants that the drawn water carries
//
// Without a spill the quality of output 2 is a division by zero: not a number, or infinite.

#include <algorithm>
#include <bit>

#include "components.h"
#include "components/lookup.h"

namespace {

// DELIBERATE: a hair below 0.01.
constexpr float kPollutantFactor = std::bit_cast<float>(std::uint32_t{0x3C23D700});

struct Balance {
    float storage;
    float supplied;
    float overflow;
};

Balance balance(float W, float Q, float draw, float V) {
    const float S = W + Q - draw;
    const bool holds = S > 0.0F;
    const float deficit = holds ? -0.0F : -S;
    const float room = V - S;
    const float overflow = room > 0.0F ? -0.0F : -room;
    return {std::min(holds ? S : 0.0F, V), draw - deficit, overflow};
}

float spillQuality(float Q, float q, float supplied, float overflow) {
    return q * (Q - kPollutantFactor * supplied) / overflow;
}

float treatedQuality(float Q, float q, float cap) {
    if (q < 10.0F) return q;
    if (cap > Q) return 0.1F * q;
    return (q * (cap * 0.1F) + (Q - cap) * q) / Q;
}

}  // namespace

void Lt_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<3, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s3, s12, s13] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    if (!addPotential(Globals, Series::NrgPot, g, s3 * Globals->TimeStep * *m)) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * Globals->TimeStep / 365.0F * *m)) return;
    addPotential(Globals, Series::CapPot, g, *m * s12);
}

void Cg_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 3, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s1, s3, s12, s13] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    const float dt = Globals->TimeStep;
    if (!addPotential(Globals, Series::NrgPot, g, std::min(in1.quantity, s1 * dt) * (s3 * *m))) return;
    if (!addPotential(Globals, Series::OprPot, g, dt * (s13 * *m) / 365.0F)) return;
    addPotential(Globals, Series::CapPot, g, *m * s12);
}

void Cr_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1) {
    Cg_Pots(id, Globals, Mult, in1);
}

void Cw_Pots(std::int32_t id, AUEglobals* Globals, Signal in1) {
    Cg_Pots(id, Globals, nullptr, in1);
}

void Lt_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1>(Globals, row);
    if (!specifications) return;
    const auto [s1] = *specifications;
    const auto W = readBefore(Globals, Series::WatQuant, id);
    if (!W) return;
    const auto [storage, supplied, overflow] = balance(*W, in1.quantity, Globals->TimeStep * s1, row->size);
    if (!store(Globals, Series::WatQuant, id, storage)) return;
    *out1 = {supplied, in1.quality * kPollutantFactor};
    *out2 = {overflow, spillQuality(in1.quantity, in1.quality, supplied, overflow)};
}

void Cr_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    Lt_Outs(id, Globals, in1, out1, out2);
}

void Cg_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    Lt_Outs(id, Globals, in1, out1, out2);
}

void Cw_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1>(Globals, row);
    if (!specifications) return;
    const auto [s1] = *specifications;
    *out1 = {in1.quantity, treatedQuality(in1.quantity, in1.quality, Globals->TimeStep * s1)};
}
