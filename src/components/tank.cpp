// Storage tank, type 32 (TN).
//
//   net = inflow + S - demand       deficit  = max(-net, 0)
//   S'  = min(max(net, 0), V)       overflow = max(net - V, 0)
//
//   inflow, demand   inputs 1 and 2                                         [vol/step]
//   S, S'            WatQuant of the tank's own id, end of step k-1 and k   [vol]
//   V                size                                                   [vol]
//   s12              capacity cost per unit of V
//   s13              operating cost per year
//   m                multiplier
//
// The tank does not track the quality of what it holds.

#include "components.h"
#include "components/lookup.h"

namespace {

struct Balance {
    float storage;
    float deficit;
    float overflow;
};

Balance balance(float inflow, float S, float demand, float V) {
    const float net = inflow + S - demand;
    const float deficit = net > 0.0F ? 0.0F : -net;
    const float available = net >= 0.0F ? net : 0.0F;
    const float room = V - available;
    if (room > 0.0F) return {available, deficit, -0.0F};
    return {V, deficit, -room};
}

}  // namespace

void Tn_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s12, s13] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    if (!addPotential(Globals, Series::CapPot, g, s12 * row->size * *m)) return;
    addPotential(Globals, Series::OprPot, g, *m * s13 * Globals->TimeStep / 365.0F);
}

void Tn_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal in2, Signal* out1, Signal* out2) {
    const auto S = readBefore(Globals, Series::WatQuant, id);
    if (!S) return;
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto [storage, deficit, overflow] = balance(in1.quantity, *S, in2.quantity, row->size);
    if (!store(Globals, Series::WatQuant, id, storage)) return;
    *out1 = {deficit, -1.0F};
    *out2 = {overflow, 0.0F};
}
