// Demand source, type 45 (IN): a demand put in from outside.
//
//   out = e P / 100
//
//   e   InsDmd of the own id at this step   [vol/step]
//   P   size: percentage of it

#include "components.h"
#include "components/lookup.h"

namespace {

float demand(float e, float P) {
    return e * P / 100.0F;
}

}  // namespace

void In_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1) {
    const auto e = readNow(Globals, Series::InsDmd, id);
    if (!e) return;
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    *out1 = {demand(*e, row->size), -1.0F};
}
