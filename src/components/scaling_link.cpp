// Scaling link and multiplier, type 34.
//
//   out = (Q v, q)
//
//   Q, q   input
//   v      Multpls of the component's own id at this step
//
// The same series also scales the potentials of all that lies upstream (simulation/multipliers.cpp).

#include "components.h"
#include "components/lookup.h"

void Ml_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    const auto v = readNow(Globals, Series::Multpls, id);
    if (!v) return;
    *out1 = {in1.quantity * *v, in1.quality};
}
