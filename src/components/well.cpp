// Well, type 38 (GW): meets a demand up to its capacity and passes on what it cannot meet.
//
//   out         = max(0, Q - s1 A dt)
//   abstraction = min(dt (s1 A), Q), taken out of the infiltration potential of the key id
//
//   Q     input: demand                              [vol/step]
//   A     size: area
//   s1    capacity per unit of A                     [vol/d]
//   s3    energy per unit of volume                  [kWh/vol]
//   s12   capacity cost per unit of A and step       s13   operating cost per unit of A and year
//   dt    TimeStep [d]
//
// No multiplier scales a well.

#include <algorithm>

#include "components/model.h"

namespace {

float abstraction(float Q, float s1, float A, float dt) {
    return std::min(dt * (s1 * A), Q);
}

float unmet(float Q, float s1, float A, float dt) {
    return std::max(0.0F, Q - s1 * A * dt);
}

struct Potentials {
    float A, s1, s3, s12, s13, dt;
    float *NrgPot, *CapPot, *OprPot, *InfPot;

    explicit Potentials(Binder& b) : A(b.size()), dt(b.timeStep()) {
        std::tie(s1, s3, s12, s13) = b.specifications<1, 3, 12, 13>();
        NrgPot = b.potential(Series::NrgPot);
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
        InfPot = b.potential(Series::InfPot);
    }

    void run(const Block& block, const Ports& ports) const {
        const auto abstracted = [&](std::int32_t j) { return abstraction(ports.in1[j].quantity, s1, A, dt); };
        block.book(NrgPot, [&](std::int32_t j) { return abstracted(j) * s3; });
        block.bookConstant(CapPot, s12 * A);
        block.bookConstant(OprPot, A * (s13 * dt / 365.0F));
        block.book(InfPot, [&](std::int32_t j) { return -abstracted(j); });
    }
};

struct Flow {
    float A, s1, dt;

    explicit Flow(Binder& b) : A(b.size()), dt(b.timeStep()) { std::tie(s1) = b.specifications<1>(); }

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j)
            ports.out1[j] = {unmet(ports.in1[j].quantity, s1, A, dt), -1.0F};
    }
};

}  // namespace

const Form Gw_Pots = kPotentials<Potentials>;
const Form Gw_Outs = kOutputs<Flow, Sets::Out1>;
