// Thresholds: divider, type 53 (DV), and switch, type 63 (ES).
//
//   DV, T < 0    out2 = min(-T, 100) percent of Q, out1 = the rest
//   DV, T >= 0   out1 = Q, out2 = 0            while Q < T
//                out1 = 0, out2 = Q            from there on, with a negative size
//                out1 = T, out2 = Q - T        from there on, else
//   ES           out1 = 0, out2 = Q            while T > size, else the other way round
//
//   Q   quantity of the input, whose quality both outputs carry
//   T   Threshold of the own id at this step

#include "components.h"
#include "components/lookup.h"

namespace {

struct Shares {
    float first;
    float second;
};

Shares divide(float Q, float T, float size) {
    if (T < 0.0F) {
        const float second = -T > 100.0F ? Q : -T / 100.0F * Q;
        return {Q - second, second};
    }
    if (T > Q) return {Q, 0.0F};
    // DELIBERATE: a negative size sends the whole flow on once the threshold is reached.
    if (size < 0.0F) return {0.0F, Q};
    return {T, Q - T};
}

Shares switchOver(float Q, float T, float size) {
    return T > size ? Shares{0.0F, Q} : Shares{Q, 0.0F};
}

void apply(Shares (*rule)(float, float, float), std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1,
           Signal* out2) {
    const auto T = readNow(Globals, Series::Threshold, id);
    if (!T) return;
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto [first, second] = rule(in1.quantity, *T, row->size);
    *out1 = {first, in1.quality};
    *out2 = {second, in1.quality};
}

}  // namespace

void Dv_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    apply(divide, id, Globals, in1, out1, out2);
}

void Es_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    apply(switchOver, id, Globals, in1, out1, out2);
}
