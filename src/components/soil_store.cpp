// Soil store, type 62 (TH): a soil column that rain fills, plants empty and that drains and runs off above a threshold.
//
//   E     = 16 (10 T / 60)^1.7 12 / 360 dt
//   W     = max(f58 P - f59 E, 0) + S          spill = max(W - Smax, 0)        S1 = min(W, Smax)
//   D     = k28 S1 dt                          O     = dt k57 max(S1 - f60 Smax, 0)
//   S'    = max(S1 - D - O, 0)                 out   = (O + spill, q25)        infiltration = D
//
//   E       potential evaporation: Thornthwaite (1948), Geographical Review 38, 55-94, with a heat index of 60, an
//           exponent of 1.7 and days of 12 hours                                                    [mm]
//   P, T    rainfall [mm] and temperature [degC] of the key id at this step
//   S, S'   WatQuant of the own id, end of step k-1 and k                                           [mm]
//   Smax    specification 1: capacity [mm]               q25   specification 25: quality of the outflow
//   k28     specification 28: drainage rate [1/d]        k57   specification 57: outflow rate above the threshold [1/d]
//   f58     specification 58: fraction of the rain that enters
//   f59     specification 59: factor on the evaporation
//   f60     specification 60: threshold as a fraction of Smax
//   dt      TimeStep [d]
//
// Below 0 degC the power has no value: E, and with it the store for good, is not a number.

#include <algorithm>
#include <cmath>

#include "components/model.h"

namespace {

float thornthwaite(float T, float dt) {
    const auto relative = static_cast<double>(10.0F * T / 60.0F);
    return static_cast<float>(16.0 * std::pow(relative, 1.7) * 12.0 / 360.0 * static_cast<double>(dt));
}

struct Soil {
    float Smax, k28, k57, f58, f59, f60;
};

struct Balance {
    float level;
    float drainage;
    float outflow;
};

Balance balance(float P, float E, float S, const Soil& soil, float dt) {
    const float W = std::max(soil.f58 * P - soil.f59 * E, 0.0F) + S;
    const float spill = std::max(W - soil.Smax, 0.0F);
    const float S1 = std::min(W, soil.Smax);
    const float D = soil.k28 * S1 * dt;
    const float O = dt * soil.k57 * std::max(S1 - soil.f60 * soil.Smax, 0.0F);
    return {std::max(S1 - D - O, 0.0F), D, O + spill};
}

struct Column {
    Soil soil;
    float q25, dt;
    const float *S, *P, *T;
    float* S1;
    BlockArray D;

    explicit Column(Binder& b) : dt(b.timeStep()) {
        // The balance does without radiation; the table is kept like those of the other models that evaporate.
        static DayTable Rpot{};
        b.fillOnFirstUse(Rpot);
        std::tie(soil.Smax, q25, soil.k28, soil.k57, soil.f58, soil.f59, soil.f60) =
            b.specifications<1, 25, 28, 57, 58, 59, 60>();
        S = b.before(Series::WatQuant);
        P = b.ofKey(Series::Rainfall);
        T = b.ofKey(Series::Temp);
        S1 = b.after(Series::WatQuant);
        D = b.handedOver();
    }

    void run(const Block& block, const Ports& ports) const {
        float held = *block.before(S);
        const float* const rain = block.now(P);
        const float* const temperature = block.now(T);
        float* const levels = block.now(S1);
        float* const drained = block.part(D);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float E = thornthwaite(temperature[j], dt);
            const auto [level, drainage, outflow] = balance(rain[j], E, held, soil, dt);
            levels[j] = held = level;
            drained[j] = drainage;
            ports.out1[j] = {outflow, q25};
        }
    }
};

struct Drainage {
    BlockArray D;
    float* InfPot;

    explicit Drainage(Binder& b) : D(b.handedOver()), InfPot(b.potential(Series::InfPot)) {}

    void run(const Block& block, const Ports&) const {
        const float* const drained = block.part(D);
        block.book(InfPot, [&](std::int32_t j) { return drained[j]; });
    }
};

}  // namespace

const Form Th_Outs = kOutputs<Column, Sets::Out1>;
const Form Th_Pots = kPotentials<Drainage>;
