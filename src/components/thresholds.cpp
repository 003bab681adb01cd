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

#include "components/model.h"

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

template <Shares (*rule)(float, float, float)>
struct Flows {
    float size;
    const float* T;

    explicit Flows(Binder& b) : size(b.size()), T(b.own(Series::Threshold)) {}

    void run(const Block& block, const Ports& ports) const {
        const float* const thresholds = block.now(T);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [Q, q] = ports.in1[j];
            const auto [first, second] = rule(Q, thresholds[j], size);
            ports.out1[j] = {first, q};
            ports.out2[j] = {second, q};
        }
    }
};

}  // namespace

const Form Dv_Outs = kOutputs<Flows<divide>, Sets::Both>;
const Form Es_Outs = kOutputs<Flows<switchOver>, Sets::Both>;
