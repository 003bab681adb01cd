// Membrane treatment, type 58 (MN): seven tenths of the flow within the capacity come out clean, the rest takes the
// load.
//
//   Q1   = 0.7 min(s1 dt, Q)           out1 = (Q1, p q)        out2 = (Q - Q1, q (Q - p Q1) / (Q - Q1))
//
//   Q, q   input                                    p     share of the pollutants that passes the membrane
//   s1     capacity [vol/d]                         s3    energy per unit of capacity [kWh]
//   s12    capacity cost per step                   s13   operating cost per year
//   dt     TimeStep [d]                             m     multiplier of the potentials
//
// Quantity times quality is conserved. Without a flow the quality of output 2 is 0/0, not a number.

#include <algorithm>

#include "components.h"
#include "components/lookup.h"

namespace {

// DELIBERATE: not 0.01.
constexpr float kPollutantFactor = 0.00999999F;

float permeate(float Q, float capacity) {
    return 0.7F * std::min(capacity, Q);
}

float concentrateQuality(float Q, float q, float Q1) {
    return q * (Q - kPollutantFactor * Q1) / (Q - Q1);
}

}  // namespace

void Mn_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 3, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s1, s3, s12, s13] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    // DELIBERATE: the energy of the full capacity, whatever the flow, the step's length and the size.
    if (!addPotential(Globals, Series::NrgPot, g, s1 * s3 * *m)) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * Globals->TimeStep / 365.0F * *m)) return;
    addPotential(Globals, Series::CapPot, g, *m * s12);
}

void Mn_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1>(Globals, row);
    if (!specifications) return;
    const float Q1 = permeate(in1.quantity, specifications->front() * Globals->TimeStep);
    *out1 = {Q1, kPollutantFactor * in1.quality};
    *out2 = {in1.quantity - Q1, concentrateQuality(in1.quantity, in1.quality, Q1)};
}
