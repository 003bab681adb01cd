// Abstraction, types 40 (AQ) and 48 (PT), and treatment works, type 47 (WP).
//
//   AQ, PT   out1 = (1 + s2) Q: the demand, grown by the losses on the way
//   WP       out1 = (1 - s2) Q, at the quality of the input
//            out2 = max(Q - s1 dt, 0): what exceeds the capacity
//
//   Q     input: demand (AQ, PT) or flow (WP)            [vol/step]
//   s1    capacity [vol/d]                               s2    loss fraction
//   s3    energy per unit of volume                      [kWh/vol]
//   s12   capacity cost per unit of size and step        s13   operating cost per year
//   dt    TimeStep [d]
//
// With StopOnInfeas on, a demand above the capacity of AQ or PT ends the run. AQ and PT leave the quality of output 2
// alone: it stays what the component before them left there. No multiplier scales any of the three.

#include <algorithm>

#include "components.h"
#include "components/lookup.h"
#include "errors.h"

namespace {

float excess(float Q, float s1, float dt) {
    return Q - s1 * dt;
}

}  // namespace

void Aq_Pots(std::int32_t id, AUEglobals* Globals, Signal in1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 2, 3, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s1, s2, s3, s12, s13] = *specifications;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    const float dt = Globals->TimeStep;
    if (!addPotential(Globals, Series::CapPot, g, s12 * row->size)) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * dt / 365.0F)) return;
    if (!addPotential(Globals, Series::NrgPot, g, std::min(dt * s1, in1.quantity) * s3)) return;
    addPotential(Globals, Series::LosPot, g, in1.quantity * s2);
}

void Aq_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 2>(Globals, row);
    if (!specifications) return;
    const auto [s1, s2] = *specifications;
    const float beyond = excess(in1.quantity, s1, Globals->TimeStep);
    if (Globals->StopOnInfeas != 0 && beyond > 0.0F) return fail(Globals, text::kInfeasible, id);
    *out1 = {(1.0F + s2) * in1.quantity, -1.0F};
    out2->quantity = beyond >= 0.0F ? beyond : 0.0F;
}

void Pt_Pots(std::int32_t id, AUEglobals* Globals, Signal in1) {
    Aq_Pots(id, Globals, in1);
}

void Pt_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    Aq_Outs(id, Globals, in1, out1, out2);
}

void Wp_Pots(std::int32_t id, AUEglobals* Globals, Signal in1) {
    Aq_Pots(id, Globals, in1);
}

void Wp_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 2>(Globals, row);
    if (!specifications) return;
    const auto [s1, s2] = *specifications;
    *out1 = {(1.0F - s2) * in1.quantity, in1.quality};
    *out2 = {std::max(excess(in1.quantity, s1, Globals->TimeStep), 0.0F), in1.quality};
}
