// Pump, type 55 (PM): energy and cost of a flow, which passes unchanged.
//
//   energy = N (s3 Q)
//
//   Q     quantity of the input                        N     size
//   s3    energy per unit of flow [kWh/vol]            s12   capacity cost per step
//   s13   operating cost per year
//
// No multiplier scales a pump.

#include "components/model.h"

namespace {

struct Potentials {
    float N, s3, s12, s13, dt;
    float *CapPot, *OprPot, *NrgPot;

    explicit Potentials(Binder& b) : N(b.size()), dt(b.timeStep()) {
        std::tie(s3, s12, s13) = b.specifications<3, 12, 13>();
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
        NrgPot = b.potential(Series::NrgPot);
    }

    void run(const Block& block, const Ports& ports) const {
        // DELIBERATE: the size scales the energy alone, not the costs.
        block.bookConstant(CapPot, s12);
        block.bookConstant(OprPot, s13 * dt / 365.0F);
        block.book(NrgPot, [&](std::int32_t j) { return N * (s3 * ports.in1[j].quantity); });
    }
};

}  // namespace

const Form Pm_Pots = kPotentials<Potentials>;
