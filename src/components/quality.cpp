// Quality: reader, type 49 (FC), setter, type 56 (FL), and switch, type 57 (QS).
//
//   FC   out1 = (Q, w)                  out2 = (Q, -1)
//   FL   out1 = (Q, e)
//   QS   out1 = (Q, -1), out2 = (0, -1) while w < limit, else the other way round
//
//   Q       quantity of the input
//   w       WatQual, at the end of the previous step, of the first reservoir (39) with the same key id;
//           FC takes 0 without one, QS cannot do without
//   e       InsDmd of the own id at this step: the quality set
//   limit   size

#include "components.h"
#include "components/lookup.h"
#include "errors.h"

namespace {

std::optional<float> readQuality(AUEglobals* Globals, const ComponentRow* reservoir) {
    return readBefore(Globals, Series::WatQual, truncated(static_cast<double>(reservoir->id)));
}

}  // namespace

void Fc_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const ComponentRow* const reservoir = findReservoir(Globals, row);
    const auto w = reservoir ? readQuality(Globals, reservoir) : 0.0F;
    if (!w) return;
    *out1 = {in1.quantity, *w};
    *out2 = {in1.quantity, -1.0F};
}

void Fl_Outs(std::int32_t id, AUEglobals* Globals, float quantity, Signal* out1) {
    const auto e = readNow(Globals, Series::InsDmd, id);
    if (!e) return;
    *out1 = {quantity, *e};
}

void Qs_Outs(std::int32_t id, AUEglobals* Globals, float quantity, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const ComponentRow* const reservoir = findReservoir(Globals, row);
    if (!reservoir) return fail(Globals, text::kNoReservoir, id);
    const auto w = readQuality(Globals, reservoir);
    if (!w) return;
    const bool below = *w < row->size;
    *out1 = {below ? quantity : 0.0F, -1.0F};
    *out2 = {below ? 0.0F : quantity, -1.0F};
}
