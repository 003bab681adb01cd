// Multiplier, type 34 (ML): scales its flow.
//
//   out = (Q v, q)
//
//   Q, q   input
//   v      Multpls of the component's own id at this step
//
// The same series also scales the potentials of all that lies upstream (simulation/multiplier_series.cpp).

#include "components/model.h"

namespace {

struct Scaling {
    const float* v;

    explicit Scaling(Binder& b) : v(b.own(Series::Multpls)) {}

    void run(const Block& block, const Ports& ports) const {
        const float* const factors = block.now(v);
        for (std::int32_t j = 0; j < block.length; ++j)
            ports.out1[j] = {ports.in1[j].quantity * factors[j], ports.in1[j].quality};
    }
};

}  // namespace

const Form Ml_Outs = kOutputs<Scaling, Sets::Out1>;
