// Green area, type 46 (BG): a green roof, lawn or pond that rain fills and that drains and evaporates.
//
//   E     = 0.0023 R / 2450 ((Tmin + Tmax) / 2 + 17.8) max(Tmax - Tmin, 0)^0.5
//   X     = P + S - k28 S dt - E (1 - f27)
//   spill = max(X - Smax, 0)        shortfall = -min(0, X)        S' = X - spill - min(0, X)
//   out1  = (spill A, q25)          out2      = (shortfall A, -1)
//   infiltration = (S k28 dt - f27 E) m A       evaporation = m E A       energy = -0.683 m E A
//
//   E          reference evapotranspiration: Hargreaves and Samani (1985), Applied Engineering in Agriculture 1, 96-99,
//              with 2450 kJ/kg of heat of vaporisation                                             [mm]
//   R          extraterrestrial radiation of the day (solarrad)                                    [kJ/m2/d]
//   P          rainfall of the key id at this step                                                 [mm]
//   Tmin,Tmax  temperatures of the key id at this step                                             [degC]
//   S, S'      WatQuant of the own id, end of step k-1 and k                                       [mm]
//   A          size: area                                                                          [m2]
//   Smax       specification 1: capacity [mm]         k28   specification 28: drainage rate [1/d]
//   q25        specification 25: quality of the spill
//   f27        specification 27: fraction of E that does not leave what is held
//   s12, s13   capacity cost, and operating cost per year, each per unit of A
//   dt         TimeStep, which must be one day        m     multiplier of the potentials
//
// 0.683 kWh is the heat of vaporisation of one litre: evaporation cools.

#include <algorithm>
#include <cmath>

#include "components/model.h"
#include "errors.h"

namespace {

constexpr double kEnergyOfEvaporation = 0.683;

float hargreaves(float R, float tMin, float tMax) {
    const auto low = static_cast<double>(tMin);
    const auto high = static_cast<double>(tMax);
    return static_cast<float>(0.0023 * static_cast<double>(R) / 2450.0 * ((low + high) * 0.5 + 17.8) *
                              std::pow(std::max(high - low, 0.0), 0.5));
}

struct Balance {
    float level;
    float spill;
    float shortfall;
};

Balance balance(float P, float S, float k28, float dt, float E, float f27, float Smax) {
    const float X = P + S - k28 * S * dt - E * (1.0F - f27);
    const float spill = std::max(X - Smax, 0.0F);
    const float below = std::min(0.0F, X);
    return {X - spill - below, spill, -below};
}

void requireDailyStep(Binder& b) {
    if (b.timeStep() != 1.0F) b.error(text::kDailyStore);
}

// Evapotranspiration under the temperatures of the key.
struct Evaporation {
    const DayTable* Rpot;
    Temperatures temperatures;

    float at(const Block& block, std::int32_t j) const {
        const std::int32_t k = block.begin + j;
        return hargreaves(insolationofthisstep(*Rpot, block.dates[j].dayOfYear), temperatures.tMin[k],
                          temperatures.tMax[k]);
    }
};

Evaporation readEvaporation(Binder& b, const DayTable& Rpot) {
    const Temperatures temperatures = b.temperatures();
    b.dates();
    return {&Rpot, temperatures};
}

struct Potentials {
    float A, s12, s13, f27, k28, dt;
    Evaporation evaporation;
    const float *m, *S;
    float *InfPot, *EvaPot, *NrgPot, *CapPot, *OprPot;

    explicit Potentials(Binder& b) : A(b.size()), dt(b.timeStep()) {
        static DayTable Rpot{};
        requireDailyStep(b);
        b.fillOnFirstUse(Rpot);
        std::tie(s12, s13, f27, k28) = b.specifications<12, 13, 27, 28>();
        evaporation = readEvaporation(b, Rpot);
        m = b.multiplier();
        S = b.before(Series::WatQuant);
        InfPot = b.potential(Series::InfPot);
        EvaPot = b.potential(Series::EvaPot);
        NrgPot = b.potential(Series::NrgPot);
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
    }

    void run(const Block& block, const Ports&) const {
        const float* const held = block.before(S);
        const float* const factors = block.now(m);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float E = evaporation.at(block, j);
            const float factor = factors ? factors[j] : 1.0F;
            block.add(InfPot, j, (held[j] * k28 * dt - f27 * E) * factor * A);
            block.add(EvaPot, j, factor * E * A);
            block.add(NrgPot, j, static_cast<double>(E * -factor * A) * kEnergyOfEvaporation);
        }
        block.book(CapPot, m, [&](float factor) { return s12 * factor * A; });
        block.book(OprPot, m, [&](float factor) { return dt * (factor * A * s13) / 365.0F; });
    }
};

struct Flows {
    float A, Smax, q25, f27, k28, dt;
    const float *S, *P;
    Evaporation evaporation;
    float* S1;

    explicit Flows(Binder& b) : A(b.size()), dt(b.timeStep()) {
        static DayTable Rpot{};
        requireDailyStep(b);
        b.fillOnFirstUse(Rpot);
        std::tie(Smax, q25, f27, k28) = b.specifications<1, 25, 27, 28>();
        S = b.before(Series::WatQuant);
        P = b.ofKey(Series::Rainfall);
        evaporation = readEvaporation(b, Rpot);
        S1 = b.after(Series::WatQuant);
    }

    void run(const Block& block, const Ports& ports) const {
        float held = *block.before(S);
        const float* const rain = block.now(P);
        float* const levels = block.now(S1);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float E = evaporation.at(block, j);
            const auto [level, spill, shortfall] = balance(rain[j], held, k28, dt, E, f27, Smax);
            levels[j] = held = level;
            ports.out1[j] = {spill * A, q25};
            ports.out2[j] = {shortfall * A, -1.0F};
        }
    }
};

}  // namespace

const Form Bg_Pots = kPotentials<Potentials>;
const Form Bg_Outs = kOutputs<Flows, Sets::Both>;
