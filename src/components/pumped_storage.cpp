// Pumped storage, type 54 (RN): moves as much water between two reservoirs as an energy demand takes for the difference
// of their heads, at most what one of them holds.
//
//   out = min(E 3.6e6 / |dH| / 10000 1000, Vlim)
//
//   E      InsDmd of the own id at this step: energy                                        [kWh]
//   dH     H2 - H1, cut to a whole number; at 0 the amount is Vlim
//   H1,H2  heads of the first and the second reservoir with the same key id
//   Vlim   volume of the reservoir with the lower head of the two, of the first at equal heads
//
// Output 1 carries the quality of the first reservoir at the end of the previous step, output 2 none.

#include <algorithm>
#include <cmath>

#include "components/head.h"
#include "components/model.h"
#include "errors.h"

namespace {

float moved(float E, float H1, float H2, float Vlim) {
    const double dH = std::fabs(static_cast<double>(truncated(static_cast<double>(H2 - H1))));
    if (dH == 0.0) return Vlim;
    const double wanted = static_cast<double>(E) * 3.6e6 / dH / 10000.0 * 1000.0;
    return static_cast<float>(std::min(wanted, static_cast<double>(Vlim)));
}

struct Transfer {
    HeadOf first, second;
    const float *E, *w;

    explicit Transfer(Binder& b) : Transfer(b, b.findOrdinaryReservoir()) {}
    Transfer(Binder& b, const ComponentRow* row) : Transfer(b, row, row ? b.findOrdinaryReservoir(row) : nullptr) {}
    Transfer(Binder& b, const ComponentRow* row1, const ComponentRow* row2)
        : first(b, row2 ? row1 : nullptr), second(b, row2) {
        if (!row2) {
            fail(b.record(), text::kNoReservoir, b.id());
            b.giveUp();
            return;
        }
        E = b.own(Series::InsDmd);
        w = b.before(Series::WatQual, HeadOf::id(row1));
    }

    void run(const Block& block, const Ports& ports) const {
        const float* const wanted = block.now(E);
        const float* const quality = block.before(w);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [V1, H1] = first.at(block, j);
            const auto [V2, H2] = second.at(block, j);
            const float quantity = moved(wanted[j], H1, H2, H1 > H2 ? V2 : V1);
            ports.out1[j] = {quantity, quality[j]};
            ports.out2[j] = {quantity, -1.0F};
        }
    }
};

}  // namespace

const Form Rn_Outs = kOutputs<Transfer, Sets::Both>;
