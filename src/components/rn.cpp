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

#include "components.h"
#include "components/head.h"
#include "components/lookup.h"
#include "errors.h"

namespace {

float release(float E, float H1, float H2, float Vlim) {
    const double dH = std::fabs(static_cast<double>(truncated(static_cast<double>(H2 - H1))));
    if (dH == 0.0) return Vlim;
    const double wanted = static_cast<double>(E) * 3.6e6 / dH / 10000.0 * 1000.0;
    return static_cast<float>(std::min(wanted, static_cast<double>(Vlim)));
}

}  // namespace

void Rn_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const ComponentRow* const first = findReservoir(Globals, row);
    const ComponentRow* const second = first ? findReservoir(Globals, row, first) : nullptr;
    if (!second) return fail(Globals, text::kNoReservoir, id);
    const auto S1 = readHead(Globals, first);
    if (!S1) return;
    const auto S2 = readHead(Globals, second);
    if (!S2) return;
    const auto E = readNow(Globals, Series::InsDmd, id);
    if (!E) return;
    const auto w = readBefore(Globals, Series::WatQual, truncated(static_cast<double>(first->id)));
    if (!w) return;
    const float quantity = release(*E, S1->H, S2->H, S1->H > S2->H ? S2->V : S1->V);
    *out1 = {quantity, *w};
    *out2 = {quantity, -1.0F};
}
