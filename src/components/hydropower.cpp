// Hydropower, type 44 (HD): what a flow through a turbine yields under the head of a reservoir.
//
//   F   = Q / dt                         runs when Hmin <= H <= Hmax and F >= Fmin
//   q   = min(F, b1 H + b0), in m3/s
//   P   = c0 + c1 q + c2 H + c3 q^2 + c4 H^2 + c5 q^3 + c6 H^3 + c7 q H + c8 q^2 H + c9 q H^2
//   energy = -u P dt 24 while it runs, else 0: what is delivered counts negative
//
//   Q            input: flow, which passes unchanged                              [L/step]
//   H            head of the first reservoir with the same key id; 0 without one
//   u            size: unit factor
//   Hmin, Hmax   specifications 47 and 48         Fmin     specification 49 [L/d]
//   b0, b1       specifications 50 and 51         c0-c9    specifications 37 to 46
//   s12          capacity cost per step           s13      operating cost per year
//   dt           TimeStep [d]

#include <algorithm>

#include "components/head.h"
#include "components/model.h"

namespace {

using HydroSpecifications = std::array<float, 17>;  // 12, 13, 37 ... 51

constexpr double kCubicMetresPerSecond = 1.15740741e-8;  // of one litre per day

float power(const float* c, float q, float H) {
    const float q2 = q * q;
    const float q3 = q2 * q;
    const float H2 = H * H;
    const float H3 = H2 * H;
    return c[0] + c[1] * q + c[2] * H + c[3] * q2 + c[4] * H2 + c[5] * q3 + c[6] * H3 + c[7] * q * H + c[8] * q2 * H +
           c[9] * q * H2;
}

// Compared so that a NaN lets the unit run.
bool runs(float H, float F, float Hmin, float Hmax, float Fmin) {
    return !(Hmin > H) && !(H > Hmax) && !(F < Fmin);
}

float energy(const HydroSpecifications& s, float F, float H, float u, float dt) {
    const float r = runs(H, F, s[12], s[13], s[14]) ? u : 0.0F;
    const float limited = std::min(F, s[16] * H + s[15]);
    const auto q = static_cast<float>(static_cast<double>(limited) * kCubicMetresPerSecond);
    return -r * power(&s[2], q, H) * dt * 24.0F;
}

struct Potentials {
    float u, dt;
    HydroSpecifications s;
    HeadOf reservoir;
    float *NrgPot, *CapPot, *OprPot;

    explicit Potentials(Binder& b)
        : u(b.size()), dt(b.timeStep()), s(readHydro(b)), reservoir(b, b.findOrdinaryReservoir()) {
        NrgPot = b.potential(Series::NrgPot);
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
    }

    static HydroSpecifications readHydro(Binder& b) {
        return std::apply([](auto... values) { return HydroSpecifications{values...}; },
                          b.specifications<12, 13, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51>());
    }

    void run(const Block& block, const Ports& ports) const {
        block.book(NrgPot, [&](std::int32_t j) {
            const float H = reservoir.exists() ? reservoir.at(block, j).H : 0.0F;
            return energy(s, ports.in1[j].quantity / dt, H, u, dt);
        });
        block.bookConstant(CapPot, s[0]);
        block.bookConstant(OprPot, s[1] * dt / 365.0F);
    }
};

}  // namespace

const Form Hd_Pots = kPotentials<Potentials>;
