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

#include "components/model.h"

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

struct Potentials {
    float V, s12, s13, s28, dt;
    const float *m, *W;
    float *OprPot, *CapPot, *InfPot;

    explicit Potentials(Binder& b) : V(b.size()), dt(b.timeStep()) {
        std::tie(s12, s13, s28) = b.specifications<12, 13, 28>();
        m = b.multiplier();
        W = b.before(Series::WatQuant);
        OprPot = b.potential(Series::OprPot);
        CapPot = b.potential(Series::CapPot);
        InfPot = b.potential(Series::InfPot);
    }

    void run(const Block& block, const Ports&) const {
        const float* const held = block.before(W);
        block.book(OprPot, m, [&](float factor) { return s13 * factor * dt / 365.0F; });
        block.book(CapPot, m, [&](float factor) { return V * (s12 * factor); });
        block.book(InfPot, m, [&](float factor, std::int32_t j) { return factor * s28 * held[j] * dt; });
    }
};

struct Flow {
    float V, s28, dt;
    const float* W;
    float* W1;

    explicit Flow(Binder& b) : V(b.size()), dt(b.timeStep()) {
        std::tie(s28) = b.specifications<28>();
        W = b.before(Series::WatQuant);
        W1 = b.after(Series::WatQuant);
    }

    void run(const Block& block, const Ports& ports) const {
        float held = *block.before(W);
        float* const stored = block.now(W1);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [storage, overflow] = balance(ports.in1[j].quantity, held, s28, dt, V);
            stored[j] = held = storage;
            ports.out1[j] = {overflow, ports.in1[j].quality};
        }
    }
};

}  // namespace

const Form Cs_Pots = kPotentials<Potentials>;
const Form Cs_Outs = kOutputs<Flow, Sets::Out1>;
