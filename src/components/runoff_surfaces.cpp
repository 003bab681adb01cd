// Runoff surfaces: impervious, type 28 (IM), and pervious, type 29 (PV).
//
// Impervious: a fixed fraction of the rain is lost, the rest runs off at once.
//
//   runoff = (1 - s27) (R A)        evaporation = R (s27 A)
//
// Pervious: a bucket that holds rain up to a depth, dries by a share of what it held, and runs off what overflows.
//
//   depth  = max(R + W - W (s27 + s28) dt, 0)        runoff = max(depth - s1, 0) A
//   W'     = min(depth, s1)
//   infiltration = s28 W A dt       evaporation = s27 W A dt
//
//   R      rainfall of the key id at this step                                  [mm]
//   A      size: area                                                           [m2]
//   W, W'  WatQuant of the surface's own id, end of step k-1 and k              [mm]
//   s1     capacity of the bucket                                               [mm]
//   s25    quality of the runoff
//   s27    impervious: fraction of the rain lost; pervious: evaporation rate    [1/d]
//   s28    infiltration rate                                                    [1/d]
//   dt     TimeStep                                                             [d]
//   m      multiplier of the potentials
//
// The potentials of the pervious surface are taken from W as it stood, whether or not the bucket can supply that much.

#include <algorithm>

#include "components/model.h"

namespace {

float runoffImpervious(float R, float s27, float A) {
    return (1.0F - s27) * (R * A);
}

struct Bucket {
    float depth;
    float runoff;  // depth
};

Bucket bucket(float R, float W, float s1, float s27, float s28, float dt) {
    const float total = R + W;
    const float losses = W * (s27 + s28) * dt;
    float depth = total - losses;
    if (depth < 0.0F) depth = 0.0F;
    return {std::min(depth, s1), depth > s1 ? depth - s1 : 0.0F};
}

struct ImperviousPotentials {
    float A, s27;
    const float *m, *R;
    float* EvaPot;

    explicit ImperviousPotentials(Binder& b) : A(b.size()) {
        std::tie(s27) = b.specifications<27>();
        m = b.multiplier();
        R = b.ofKey(Series::Rainfall);
        EvaPot = b.potential(Series::EvaPot);
    }

    void run(const Block& block, const Ports&) const {
        const float* const rain = block.now(R);
        block.book(EvaPot, m, [&](float factor, std::int32_t j) { return factor * (rain[j] * (s27 * A)); });
    }
};

struct ImperviousFlow {
    float A, s25, s27;
    const float* R;

    explicit ImperviousFlow(Binder& b) : A(b.size()) {
        std::tie(s25, s27) = b.specifications<25, 27>();
        R = b.ofKey(Series::Rainfall);
    }

    void run(const Block& block, const Ports& ports) const {
        const float* const rain = block.now(R);
        for (std::int32_t j = 0; j < block.length; ++j)
            ports.out1[j] = {runoffImpervious(rain[j], s27, A), s25};
    }
};

struct PerviousPotentials {
    float A, s27, s28, dt;
    const float *m, *W;
    float *InfPot, *EvaPot;

    explicit PerviousPotentials(Binder& b) : A(b.size()), dt(b.timeStep()) {
        std::tie(s27, s28) = b.specifications<27, 28>();
        m = b.multiplier();
        W = b.before(Series::WatQuant);
        InfPot = b.potential(Series::InfPot);
        EvaPot = b.potential(Series::EvaPot);
    }

    void run(const Block& block, const Ports&) const {
        const float* const held = block.before(W);
        block.book(InfPot, m, [&](float factor, std::int32_t j) { return s28 * factor * held[j] * A * dt; });
        block.book(EvaPot, m, [&](float factor, std::int32_t j) { return A * (factor * s27 * held[j]) * dt; });
    }
};

struct PerviousFlow {
    float A, s1, s25, s27, s28, dt;
    const float *W, *R;
    float* W1;

    explicit PerviousFlow(Binder& b) : A(b.size()), dt(b.timeStep()) {
        std::tie(s1, s25, s27, s28) = b.specifications<1, 25, 27, 28>();
        W = b.before(Series::WatQuant);
        R = b.ofKey(Series::Rainfall);
        W1 = b.after(Series::WatQuant);
    }

    void run(const Block& block, const Ports& ports) const {
        const float* const rain = block.now(R);
        float* const depths = block.now(W1);
        float held = *block.before(W);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [depth, runoff] = bucket(rain[j], held, s1, s27, s28, dt);
            depths[j] = held = depth;
            ports.out1[j] = {runoff * A, s25};
        }
    }
};

}  // namespace

const Form Im_Pots = kPotentials<ImperviousPotentials>;
const Form Im_Outs = kOutputs<ImperviousFlow, Sets::Out1>;
const Form Pv_Pots = kPotentials<PerviousPotentials>;
const Form Pv_Outs = kOutputs<PerviousFlow, Sets::Out1>;
