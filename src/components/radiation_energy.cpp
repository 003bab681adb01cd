// Radiation energy: solar panel, type 59 (PA), and net radiation, type 60 (NR).
//
//   PA   energy = -R 0.000278 A s55: what is delivered counts negative
//   NR   energy = (0.8 R - Rl) 0.000278 A
//
//   R          incoming short-wave radiation (solarrad)        [kJ/m2/d]
//   Rl         net outgoing long-wave radiation (solarrad)     [kJ/m2/d]
//   A          size: area                                      [m2]
//   s55        yield per unit of radiation
//   s12, s13   capacity cost, and operating cost per year, each per unit of A
//   dt         TimeStep, which must be one day                 m   multiplier
//
// 0.000278 kWh is one kJ; 0.8 is what is not reflected. Each evaluation adds one daily range of temperature to the 30
// that all radiation units share, so the order of components matters.

#include "components/model.h"
#include "errors.h"

namespace {

constexpr float kAbsorbed = 0.8F;
constexpr double kKilowattHours = 0.000278;  // of one kJ

float netEnergy(float shortWave, float longWave, float A) {
    return static_cast<float>(static_cast<double>(shortWave - longWave) * kKilowattHours * static_cast<double>(A));
}

float deliveredEnergy(float R, float A, float s55) {
    return static_cast<float>(static_cast<double>(R) * -kKilowattHours * static_cast<double>(A) *
                              static_cast<double>(s55));
}

void requireDailyStep(Binder& b) {
    if (b.timeStep() != 1.0F) b.error(text::kDailyRadiation);
}

// PA
struct SolarPanel {
    float A, s12, s13, s55, dt;
    BlockArray R;
    const float* m;
    float *NrgPot, *OprPot, *CapPot;

    explicit SolarPanel(Binder& b) : A(b.size()), dt(b.timeStep()) {
        static DayTable Rpot{};
        requireDailyStep(b);
        b.fillOnFirstUse(Rpot);
        const Temperatures temperatures = b.temperatures();
        std::tie(s12, s13, s55) = b.specifications<12, 13, 55>();
        R = b.shortWave(Rpot, temperatures);
        m = b.multiplier();
        NrgPot = b.potential(Series::NrgPot);
        OprPot = b.potential(Series::OprPot);
        CapPot = b.potential(Series::CapPot);
    }

    void run(const Block& block, const Ports&) const {
        const float* const shortWave = block.part(R);
        block.book(NrgPot, m,
                   [&](float factor, std::int32_t j) { return factor * deliveredEnergy(shortWave[j], A, s55); });
        block.book(OprPot, m, [&](float factor) { return s13 * A * dt / 365.0F * factor; });
        block.book(CapPot, m, [&](float factor) { return factor * (A * s12); });
    }
};

// NR
struct NetRadiation {
    float A;
    const DayTable* table;
    Temperatures temperatures;
    BlockArray R;
    const float* m;
    float* NrgPot;

    explicit NetRadiation(Binder& b) : A(b.size()) {
        static DayTable Rpot{};
        requireDailyStep(b);
        b.fillOnFirstUse(Rpot);
        table = &Rpot;
        temperatures = b.temperatures();
        R = b.shortWave(Rpot, temperatures);
        m = b.multiplier();
        NrgPot = b.potential(Series::NrgPot);
    }

    void run(const Block& block, const Ports&) const {
        block.book(NrgPot, m, [&](float factor, std::int32_t j) {
            const std::int32_t k = block.begin + j;
            const float Ra = insolationofthisstep(*table, block.dates[j].dayOfYear);
            const float shortWave = block.part(R)[j] * kAbsorbed;
            // DELIBERATE: the absorbed part divided again, not the value that it came from.
            const float longWave = netlongwave(Ra, shortWave / kAbsorbed, temperatures.tMin[k], temperatures.tMax[k]);
            return factor * netEnergy(shortWave, longWave, A);
        });
    }
};

}  // namespace

const Form Pa_Pots = kPotentials<SolarPanel>;
const Form Nr_Pots = kPotentials<NetRadiation>;
