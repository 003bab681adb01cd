// Wind turbine, type 61 (WN): a power curve without a cut-out.
//
//   x = 0.28 U / s56        P = s1 (103.6 x^2.764 - 3.96) / 100        energy = -max(P, 0) dt 24 N
//
//   U     wind of the key id at this step [km/h]; 0.28 turns it into m/s
//   N     size: number of units                s1    scale of the power curve [kW]
//   s56   divisor of the wind                  s12   capacity cost per unit and step
//   s13   operating cost per unit and year     dt    TimeStep [d]
//
// What is delivered counts negative. No multiplier scales a wind turbine.

#include <cmath>

#include "components/model.h"

namespace {

float generation(float U, float s1, float s56) {
    const double x = static_cast<double>(U / s56) * 0.28;
    const double P = static_cast<double>(s1) * (103.6 * std::pow(x, 2.764) - 3.96) / 100.0;
    return P > 0.0 ? static_cast<float>(-P) : -0.0F;
}

struct Potentials {
    float N, s1, s12, s13, s56, dt;
    const float* U;
    float *NrgPot, *OprPot, *CapPot;

    explicit Potentials(Binder& b) : N(b.size()), dt(b.timeStep()), U(b.ofKey(Series::Wind)) {
        std::tie(s1, s12, s13, s56) = b.specifications<1, 12, 13, 56>();
        NrgPot = b.potential(Series::NrgPot);
        OprPot = b.potential(Series::OprPot);
        CapPot = b.potential(Series::CapPot);
    }

    void run(const Block& block, const Ports&) const {
        const float* const wind = block.now(U);
        block.book(NrgPot, [&](std::int32_t j) { return generation(wind[j], s1, s56) * dt * 24.0F * N; });
        block.bookConstant(OprPot, s13 * dt / 365.0F * N);
        block.bookConstant(CapPot, s12 * N);
    }
};

}  // namespace

const Form Wn_Pots = kPotentials<Potentials>;
