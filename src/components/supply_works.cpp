// Supply works: abstraction, type 40 (AQ), potable treatment, type 48 (PT), and treatment line, type 47 (WP).
//
//   AQ, PT   out1 = (1 + s2) Q: the demand, grown by the losses
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

#include "components/model.h"
#include "errors.h"

namespace {

float excess(float Q, float s1, float dt) {
    return Q - s1 * dt;
}

struct Potentials {
    float A, s1, s2, s3, s12, s13, dt;
    float *CapPot, *OprPot, *NrgPot, *LosPot;

    explicit Potentials(Binder& b) : A(b.size()), dt(b.timeStep()) {
        std::tie(s1, s2, s3, s12, s13) = b.specifications<1, 2, 3, 12, 13>();
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
        NrgPot = b.potential(Series::NrgPot);
        LosPot = b.potential(Series::LosPot);
    }

    void run(const Block& block, const Ports& ports) const {
        block.bookConstant(CapPot, s12 * A);
        block.bookConstant(OprPot, s13 * dt / 365.0F);
        block.book(NrgPot, [&](std::int32_t j) { return std::min(dt * s1, ports.in1[j].quantity) * s3; });
        block.book(LosPot, [&](std::int32_t j) { return ports.in1[j].quantity * s2; });
    }
};

struct Abstraction {
    float s1, s2, dt;
    AUEglobals* Globals;
    std::int32_t id;
    bool mayStop;

    explicit Abstraction(Binder& b)
        : dt(b.timeStep()), Globals(b.record()), id(b.id()), mayStop(Globals->StopOnInfeas != 0) {
        std::tie(s1, s2) = b.specifications<1, 2>();
        if (mayStop) b.canStop();
    }

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float Q = ports.in1[j].quantity;
            const float beyond = excess(Q, s1, dt);
            if (mayStop && beyond > 0.0F) return fail(Globals, text::kInfeasible, id);
            ports.out1[j] = {(1.0F + s2) * Q, -1.0F};
            ports.out2[j].quantity = beyond >= 0.0F ? beyond : 0.0F;
        }
    }
};

struct Treatment {
    float s1, s2, dt;

    explicit Treatment(Binder& b) : dt(b.timeStep()) { std::tie(s1, s2) = b.specifications<1, 2>(); }

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [Q, q] = ports.in1[j];
            ports.out1[j] = {(1.0F - s2) * Q, q};
            ports.out2[j] = {std::max(excess(Q, s1, dt), 0.0F), q};
        }
    }
};

}  // namespace

const Form Aq_Pots = kPotentials<Potentials>;
const Form Pt_Pots = kPotentials<Potentials>;
const Form Wp_Pots = kPotentials<Potentials>;

const Form Aq_Outs = kOutputs<Abstraction, Sets::Out1AndQuantity2>;
const Form Pt_Outs = kOutputs<Abstraction, Sets::Out1AndQuantity2>;
const Form Wp_Outs = kOutputs<Treatment, Sets::Both>;
