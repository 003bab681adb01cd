// Links, which lose a part of their flow: gravity, type 35 (GL), supply, type 27 (PL), sewer, type 41 (SG), drainage,
// type 42 (DS), and infiltration link, type 11 (LS).
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

#include "components/model.h"

namespace {

float reduced(float fraction, float Q) {
    return (1.0F - fraction) * Q;
}

// DELIBERATE: the link adds its loss fraction, so that a demand travelling through it grows by what it will lose.
float increased(float fraction, float Q) {
    return (1.0F + fraction) * Q;
}

// GL and PL
struct Potentials {
    float s2, s3, s12, s13, dt;
    const float* m;
    float *NrgPot, *CapPot, *OprPot, *LosPot;

    explicit Potentials(Binder& b) : dt(b.timeStep()) {
        std::tie(s2, s3, s12, s13) = b.specifications<2, 3, 12, 13>();
        m = b.multiplier();
        NrgPot = b.potential(Series::NrgPot);
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
        LosPot = b.potential(Series::LosPot);
    }

    void run(const Block& block, const Ports& ports) const {
        block.book(NrgPot, m, [&](float factor, std::int32_t j) { return s3 * ports.in1[j].quantity * factor; });
        block.book(CapPot, m, [&](float factor) { return s12 * factor; });
        block.book(OprPot, m, [&](float factor) { return s13 * factor * dt / 365.0F; });
        block.book(LosPot, m, [&](float factor, std::int32_t j) { return factor * (ports.in1[j].quantity * s2); });
    }
};

// SG and DS
struct DrainPotentials {
    float s2, s12, s13, dt;
    const float* m;
    float *CapPot, *OprPot, *LosPot;

    explicit DrainPotentials(Binder& b) : dt(b.timeStep()) {
        std::tie(s2, s12, s13) = b.specifications<2, 12, 13>();
        m = b.multiplier();
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
        LosPot = b.potential(Series::LosPot);
    }

    void run(const Block& block, const Ports& ports) const {
        block.book(CapPot, m, [&](float factor) { return s12 * factor; });
        block.book(OprPot, m, [&](float factor) { return s13 * factor * dt / 365.0F; });
        block.book(LosPot, m, [&](float factor, std::int32_t j) { return factor * s2 * ports.in1[j].quantity; });
    }
};

// LS
struct SeepagePotentials {
    float s12, s13, s28, dt;
    const float* m;
    float *OprPot, *CapPot, *InfPot;

    explicit SeepagePotentials(Binder& b) : dt(b.timeStep()) {
        std::tie(s12, s13, s28) = b.specifications<12, 13, 28>();
        m = b.multiplier();
        OprPot = b.potential(Series::OprPot);
        CapPot = b.potential(Series::CapPot);
        InfPot = b.potential(Series::InfPot);
    }

    void run(const Block& block, const Ports& ports) const {
        block.book(OprPot, m, [&](float factor) { return s13 * dt / 365.0F * factor; });
        block.book(CapPot, m, [&](float factor) { return s12 * factor; });
        block.book(InfPot, m, [&](float factor, std::int32_t j) { return factor * (s28 * ports.in1[j].quantity); });
    }
};

// Applies a formula of one specification to the flow.
template <int Number, float (*formula)(float, float)>
struct Flow {
    float fraction;

    explicit Flow(Binder& b) { std::tie(fraction) = b.specifications<Number>(); }

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j)
            ports.out1[j] = {formula(fraction, ports.in1[j].quantity), ports.in1[j].quality};
    }
};

}  // namespace

const Form Gl_Pots = kPotentials<Potentials>;
const Form Pl_Pots = kPotentials<Potentials>;
const Form Sg_Pots = kPotentials<DrainPotentials>;
const Form Ds_Pots = kPotentials<DrainPotentials>;
const Form Ls_Pots = kPotentials<SeepagePotentials>;

const Form Gl_Outs = kOutputs<Flow<2, reduced>, Sets::Out1>;
const Form Pl_Outs = kOutputs<Flow<2, increased>, Sets::Out1>;
const Form Sg_Outs = kOutputs<Flow<2, reduced>, Sets::Out1>;
const Form Ds_Outs = kOutputs<Flow<2, reduced>, Sets::Out1>;
const Form Ls_Outs = kOutputs<Flow<28, reduced>, Sets::Out1>;
