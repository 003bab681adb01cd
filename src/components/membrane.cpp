// Membrane, type 58 (MN): seven tenths of the flow within the capacity come out clean, the rest takes the
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

#include "components/model.h"

namespace {

// DELIBERATE: not 0.01.
constexpr float kPollutantFactor = 0.00999999F;

float permeate(float Q, float capacity) {
    return 0.7F * std::min(capacity, Q);
}

float concentrateQuality(float Q, float q, float Q1) {
    return q * (Q - kPollutantFactor * Q1) / (Q - Q1);
}

struct Potentials {
    float s1, s3, s12, s13, dt;
    const float* m;
    float *NrgPot, *OprPot, *CapPot;

    explicit Potentials(Binder& b) : dt(b.timeStep()) {
        std::tie(s1, s3, s12, s13) = b.specifications<1, 3, 12, 13>();
        m = b.multiplier();
        NrgPot = b.potential(Series::NrgPot);
        OprPot = b.potential(Series::OprPot);
        CapPot = b.potential(Series::CapPot);
    }

    void run(const Block& block, const Ports&) const {
        // DELIBERATE: the energy of the full capacity, whatever the flow, the step's length and the size.
        block.bookEnergy(NrgPot, m, [&](float factor) { return s1 * s3 * factor; });
        block.book(OprPot, m, [&](float factor) { return s13 * dt / 365.0F * factor; });
        block.book(CapPot, m, [&](float factor) { return factor * s12; });
    }
};

struct Flows {
    float s1, dt;

    explicit Flows(Binder& b) : dt(b.timeStep()) { std::tie(s1) = b.specifications<1>(); }

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [Q, q] = ports.in1[j];
            const float Q1 = permeate(Q, s1 * dt);
            ports.out1[j] = {Q1, kPollutantFactor * q};
            ports.out2[j] = {Q - Q1, concentrateQuality(Q, q, Q1)};
        }
    }
};

}  // namespace

const Form Mn_Pots = kPotentials<Potentials>;
const Form Mn_Outs = kOutputs<Flows, Sets::Both>;
