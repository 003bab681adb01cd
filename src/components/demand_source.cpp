// Demand source, type 45 (IN): a demand put in from outside.
//
//   out = e P / 100
//
//   e   InsDmd of the own id at this step   [vol/step]
//   P   size: percentage of it

#include "components/model.h"

namespace {

float demand(float e, float P) {
    return e * P / 100.0F;
}

struct Source {
    float P;
    const float* e;

    explicit Source(Binder& b) : P(b.size()), e(b.own(Series::InsDmd)) {}

    void run(const Block& block, const Ports& ports) const {
        const float* const demands = block.now(e);
        for (std::int32_t j = 0; j < block.length; ++j)
            ports.out1[j] = {demand(demands[j], P), -1.0F};
    }
};

}  // namespace

const Form In_Outs = kOutputs<Source, Sets::Out1>;
