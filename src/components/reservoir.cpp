// Reservoir, type 39 (SW): surface water with inflow, demand, seepage through its bed and one mixed quality.
//
//   a        = max(s30 + s31 V0 / 1e9 + s32 V0^2 / 1e18, 0)        surface
//   L        = max(0, a s34 + s33) dt                              seepage
//   B        = Q1 - D - L + V0
//   deficit  = max(-B, 0)        overflow = max(B - s1, 0)         V = max(0, min(s1, B))
//   C        = max((q1 Q1 + C0 V0) / (V0 + Q1), 0)                 for V0 > 0.1, else 0
//
//   Q1, q1   input 1: inflow                                                  [vol/step], quality
//   D        input 2: demand                                                  [vol/step]
//   V0, V    WatQuant of the own id, end of step k-1 and k                    [vol]
//   C0, C    WatQual of the own id, likewise
//   s1       capacity [vol]                  s12, s13   capacity cost per step, operating cost per year
//   s30-s32  surface by volume               s33, s34   seepage [vol/d], and per unit of surface
//   dt       TimeStep [d]
//
// The spill leaves with the mixed quality; without a spill output 2 is (0, 0). No multiplier scales a reservoir.

#include <algorithm>

#include "components/model.h"

namespace {

float surface(float V0, float s30, float s31, float s32) {
    const double a =
        static_cast<double>(s30) + static_cast<double>(s31 * V0) / 1e9 + static_cast<double>(s32 * V0 * V0) / 1e18;
    return a < 0.0 ? 0.0F : static_cast<float>(a);
}

float seepage(float a, float s33, float s34, float dt) {
    return std::max(0.0F, a * s34 + s33) * dt;
}

float mixedQuality(float Q1, float q1, float V0, float C0) {
    if (!(V0 > 0.1F)) return 0.0F;
    const float C = (q1 * Q1 + C0 * V0) / (V0 + Q1);
    return C < 0.0F ? 0.0F : C;
}

struct Balance {
    float volume;
    float deficit;
    float overflow;
};

Balance balance(float Q1, float D, float L, float V0, float s1) {
    const float B = Q1 - D - L + V0;
    const float deficit = B > 0.0F ? 0.0F : -B;
    const float overflow = s1 - B > 0.0F ? 0.0F : B - s1;
    return {std::max(0.0F, std::min(s1, B)), deficit, overflow};
}

// Surface and seepage of the water held.
struct Bed {
    float s30, s31, s32, s33, s34, dt;

    float seeped(float V0) const { return seepage(surface(V0, s30, s31, s32), s33, s34, dt); }
};

struct Potentials {
    float s12, s13;
    Bed bed;
    const float* V;
    float *CapPot, *OprPot, *InfPot;

    explicit Potentials(Binder& b) {
        bed.dt = b.timeStep();
        std::tie(s12, s13, bed.s33, bed.s34) = b.specifications<12, 13, 33, 34>();
        V = b.before(Series::WatQuant);
        std::tie(bed.s30, bed.s31, bed.s32) = b.specifications<30, 31, 32>();
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
        InfPot = b.potential(Series::InfPot);
    }

    void run(const Block& block, const Ports&) const {
        const float* const V0 = block.before(V);
        block.bookConstant(CapPot, s12);
        block.bookConstant(OprPot, s13 * bed.dt / 365.0F);
        block.book(InfPot, [&](std::int32_t j) { return bed.seeped(V0[j]); });
    }
};

struct Flows {
    float s1;
    Bed bed;
    const float *V, *C;
    float *V1, *C1;

    explicit Flows(Binder& b) {
        bed.dt = b.timeStep();
        std::tie(s1, bed.s33, bed.s34) = b.specifications<1, 33, 34>();
        V = b.before(Series::WatQuant);
        C = b.before(Series::WatQual);
        std::tie(bed.s30, bed.s31, bed.s32) = b.specifications<30, 31, 32>();
        V1 = b.after(Series::WatQuant);
        C1 = b.after(Series::WatQual);
    }

    void run(const Block& block, const Ports& ports) const {
        float V0 = *block.before(V);
        float C0 = *block.before(C);
        float* const volumes = block.now(V1);
        float* const qualities = block.now(C1);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [Q1, q1] = ports.in1[j];
            const float quality = mixedQuality(Q1, q1, V0, C0);
            const auto [volume, deficit, overflow] = balance(Q1, ports.in2[j].quantity, bed.seeped(V0), V0, s1);
            volumes[j] = V0 = volume;
            qualities[j] = C0 = quality;
            ports.out1[j] = {deficit, -1.0F};
            ports.out2[j] = {overflow, overflow > 0.0F ? quality : 0.0F};
        }
    }
};

}  // namespace

const Form Sw_Pots = kPotentials<Potentials>;
const Form Sw_Outs = kOutputs<Flows, Sets::Both>;
