// Treatment stages: local, type 3 (LT), rainwater, type 23 (CR), and greywater treatment, type 24 (CG), which draw
// steadily from a store, and wastewater treatment, type 25 (CW), within a daily capacity.
//
// LT, CR, CG: a fixed volume is drawn every day, what exceeds the capacity is spilled, and the pollutants that came in
// and were not drawn leave with the spill.
//
//   draw     = dt s1                           S        = W + Q - draw
//   supplied = draw - max(-S, 0)               overflow = max(S - V, 0)
//   W'       = min(max(S, 0), V)
//   out1     = (supplied, q p)                 out2     = (overflow, q (Q - p supplied) / overflow)
//
// CW: the flow passes, and water of quality 10 or worse has a tenth of it after treatment.
//
//   out      = (Q, q)                                                  for q < 10
//              (Q, 0.1 q)                                              for cap > Q,  cap = dt s1
//              (Q, (q (0.1 cap) + (Q - cap) q) / Q)                    else
//
//   Q, q     input                                                                  [vol/step], quality
//   W, W'    WatQuant of the own id, end of step k-1 and k                          [vol]
//   V        size: capacity                                                         [vol]
//   s1       volume drawn, or treated                                               [vol/d]
//   s3       energy: LT per day, else per unit of volume                            [kWh]
//   s12      capacity cost per step          s13   operating cost per year
//   dt       TimeStep [d]                    m     multiplier of the potentials; treatment (CW) has none
//   p        share of the pollutants that the drawn water carries
//
// Without a spill the quality of output 2 is a division by zero: not a number, or infinite.

#include <algorithm>
#include <bit>

#include "components/model.h"

namespace {

// DELIBERATE: a hair below 0.01.
constexpr float kPollutantFactor = std::bit_cast<float>(std::uint32_t{0x3C23D700});

struct Balance {
    float storage;
    float supplied;
    float overflow;
};

Balance balance(float W, float Q, float draw, float V) {
    const float S = W + Q - draw;
    const bool holds = S > 0.0F;
    const float deficit = holds ? -0.0F : -S;
    const float room = V - S;
    const float overflow = room > 0.0F ? -0.0F : -room;
    return {std::min(holds ? S : 0.0F, V), draw - deficit, overflow};
}

float spillQuality(float Q, float q, float supplied, float overflow) {
    return q * (Q - kPollutantFactor * supplied) / overflow;
}

float treatedQuality(float Q, float q, float cap) {
    if (q < 10.0F) return q;
    if (cap > Q) return 0.1F * q;
    return (q * (cap * 0.1F) + (Q - cap) * q) / Q;
}

// LT
struct DrawPotentials {
    float s3, s12, s13, dt;
    const float* m;
    float *NrgPot, *OprPot, *CapPot;

    explicit DrawPotentials(Binder& b) : dt(b.timeStep()) {
        std::tie(s3, s12, s13) = b.specifications<3, 12, 13>();
        m = b.multiplier();
        NrgPot = b.potential(Series::NrgPot);
        OprPot = b.potential(Series::OprPot);
        CapPot = b.potential(Series::CapPot);
    }

    void run(const Block& block, const Ports&) const {
        block.bookEnergy(NrgPot, m, [&](float factor) { return s3 * dt * factor; });
        block.book(OprPot, m, [&](float factor) { return s13 * dt / 365.0F * factor; });
        block.book(CapPot, m, [&](float factor) { return factor * s12; });
    }
};

// CR and CG, and without multiplier CW
template <bool isScaled>
struct TreatmentPotentials {
    float s1, s3, s12, s13, dt;
    const float* m;
    float *NrgPot, *OprPot, *CapPot;

    explicit TreatmentPotentials(Binder& b) : dt(b.timeStep()) {
        std::tie(s1, s3, s12, s13) = b.specifications<1, 3, 12, 13>();
        m = isScaled ? b.multiplier() : nullptr;
        NrgPot = b.potential(Series::NrgPot);
        OprPot = b.potential(Series::OprPot);
        CapPot = b.potential(Series::CapPot);
    }

    void run(const Block& block, const Ports& ports) const {
        block.book(NrgPot, m, [&](float factor, std::int32_t j) {
            return std::min(ports.in1[j].quantity, s1 * dt) * (s3 * factor);
        });
        block.book(OprPot, m, [&](float factor) { return dt * (s13 * factor) / 365.0F; });
        block.book(CapPot, m, [&](float factor) { return factor * s12; });
    }
};

struct Storage {
    float V, s1, dt;
    const float* W;
    float* W1;

    explicit Storage(Binder& b) : V(b.size()), dt(b.timeStep()) {
        std::tie(s1) = b.specifications<1>();
        W = b.before(Series::WatQuant);
        W1 = b.after(Series::WatQuant);
    }

    void run(const Block& block, const Ports& ports) const {
        float held = *block.before(W);
        float* const stored = block.now(W1);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [Q, q] = ports.in1[j];
            const auto [storage, supplied, overflow] = balance(held, Q, dt * s1, V);
            stored[j] = held = storage;
            ports.out1[j] = {supplied, q * kPollutantFactor};
            ports.out2[j] = {overflow, spillQuality(Q, q, supplied, overflow)};
        }
    }
};

struct Treatment {
    float s1, dt;

    explicit Treatment(Binder& b) : dt(b.timeStep()) { std::tie(s1) = b.specifications<1>(); }

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [Q, q] = ports.in1[j];
            ports.out1[j] = {Q, treatedQuality(Q, q, dt * s1)};
        }
    }
};

}  // namespace

const Form Lt_Pots = kPotentials<DrawPotentials>;
const Form Cr_Pots = kPotentials<TreatmentPotentials<true>>;
const Form Cg_Pots = kPotentials<TreatmentPotentials<true>>;
const Form Cw_Pots = kPotentials<TreatmentPotentials<false>>;

const Form Lt_Outs = kOutputs<Storage, Sets::Both>;
const Form Cr_Outs = kOutputs<Storage, Sets::Both>;
const Form Cg_Outs = kOutputs<Storage, Sets::Both>;
const Form Cw_Outs = kOutputs<Treatment, Sets::Out1>;
