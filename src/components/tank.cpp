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

#include "components/model.h"

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

struct Costs {
    float V, s12, s13, dt;
    const float* m;
    float *CapPot, *OprPot;

    explicit Costs(Binder& b) : V(b.size()), dt(b.timeStep()) {
        std::tie(s12, s13) = b.specifications<12, 13>();
        m = b.multiplier();
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
    }

    void run(const Block& block, const Ports&) const {
        block.book(CapPot, m, [&](float factor) { return s12 * V * factor; });
        block.book(OprPot, m, [&](float factor) { return factor * s13 * dt / 365.0F; });
    }
};

struct Flows {
    float V;
    const float* S;
    float* S1;

    explicit Flows(Binder& b) : V(b.size()), S(b.before(Series::WatQuant)), S1(b.after(Series::WatQuant)) {}

    void run(const Block& block, const Ports& ports) const {
        float held = *block.before(S);
        float* const stored = block.now(S1);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [storage, deficit, overflow] = balance(ports.in1[j].quantity, held, ports.in2[j].quantity, V);
            stored[j] = held = storage;
            ports.out1[j] = {deficit, -1.0F};
            ports.out2[j] = {overflow, 0.0F};
        }
    }
};

}  // namespace

const Form Tn_Pots = kPotentials<Costs>;
const Form Tn_Outs = kOutputs<Flows, Sets::Both>;
