// Release between two reservoirs for energy, type 54 (RN): as much water as an energy demand takes to move by the
// difference of two heads, at most what the reservoir it comes from holds.
//
//   out = min(E 3.6e6 / |dH| / 10000 1000, Vlim)
//
//   E      InsDmd of the own id at this step: energy                                        [kWh]
//   dH     H2 - H1, cut to a whole number; with 0 the release is Vlim
//   H1,H2  heads of the first and the second reservoir (39) with the same key id
//   Vlim   volume of the reservoir with the lower head of the two, of the first at equal heads
//
// Output 1 carries the quality of the first reservoir at the end of the previous step, output 2 none.

#include <algorithm>
#include <cmath>

#include "components/head.h"
#include "components/model.h"
#include "errors.h"

namespace {

float release(float E, float H1, float H2, float Vlim) {
    const double dH = std::fabs(static_cast<double>(truncated(static_cast<double>(H2 - H1))));
    if (dH == 0.0) return Vlim;
    const double wanted = static_cast<double>(E) * 3.6e6 / dH / 10000.0 * 1000.0;
    return static_cast<float>(std::min(wanted, static_cast<double>(Vlim)));
}

struct Release {
    HeadOf first, second;
    const float *E, *w;

    explicit Release(Binder& b) : Release(b, b.findReservoir()) {}
    Release(Binder& b, const ComponentRow* row) : Release(b, row, row ? b.findReservoir(row) : nullptr) {}
    Release(Binder& b, const ComponentRow* row1, const ComponentRow* row2)
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
            const float quantity = release(wanted[j], H1, H2, H1 > H2 ? V2 : V1);
            ports.out1[j] = {quantity, quality[j]};
            ports.out2[j] = {quantity, -1.0F};
        }
    }
};

}  // namespace

const Form Rn_Outs = kOutputs<Release, Sets::Both>;
