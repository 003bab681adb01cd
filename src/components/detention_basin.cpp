// Detention basin, type 50 (DT): empties through an outlet.
//
//   F  = min(H, k H^1.5 dt 1440)        out = (F A, q)        H' = max((Q - F A) / A + H, 0)
//
//   Q, q    input                                                     [vol/step], quality
//   H, H'   WatQuant of the own id, end of step k-1 and k: level
//   k       specification 1: outlet coefficient                       [per minute]
//   A       size: area                                                dt   TimeStep [d]

#include <algorithm>
#include <cmath>

#include "components/model.h"

namespace {

constexpr double kMinutesPerDay = 1440.0;

float outflowDepth(float H, float k, float dt) {
    const auto level = static_cast<double>(H);
    const double free = static_cast<double>(k) * std::pow(level, 1.5) * static_cast<double>(dt) * kMinutesPerDay;
    return static_cast<float>(std::min(level, free));
}

float levelAfter(float Q, float F, float A, float H) {
    return std::max((Q - F * A) / A + H, 0.0F);
}

struct Flow {
    float A, k, dt;
    const float* H;
    float* H1;

    explicit Flow(Binder& b) : A(b.size()), dt(b.timeStep()), H(b.before(Series::WatQuant)) {
        std::tie(k) = b.specifications<1>();
        H1 = b.after(Series::WatQuant);
    }

    void run(const Block& block, const Ports& ports) const {
        float level = *block.before(H);
        float* const levels = block.now(H1);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [Q, q] = ports.in1[j];
            const float F = outflowDepth(level, k, dt);
            levels[j] = level = levelAfter(Q, F, A, level);
            ports.out1[j] = {F * A, q};
        }
    }
};

}  // namespace

const Form Dt_Outs = kOutputs<Flow, Sets::Out1>;
