// Quality: from a reservoir, type 49 (FC), setter, type 56 (FL), and switch, type 57 (QS).
//
//   FC   out1 = (Q, w)                  out2 = (Q, -1)
//   FL   out1 = (Q, e)
//   QS   out1 = (Q, -1), out2 = (0, -1) while w < limit, else the other way round
//
//   Q       quantity of the input
//   w       WatQual, at the end of the previous step, of the first reservoir with the same key id;
//           FC takes 0 without one, QS cannot do without
//   e       InsDmd of the own id at this step: the quality set
//   limit   size

#include "components/model.h"
#include "errors.h"

namespace {

// The quality of the first reservoir of a component's key at the end of the step before; null without a reservoir.
const float* readQuality(Binder& b, const ComponentRow* reservoir) {
    return reservoir ? b.before(Series::WatQual, truncated(static_cast<double>(reservoir->id))) : nullptr;
}

struct FromReservoir {
    const float* w;

    explicit FromReservoir(Binder& b) : w(readQuality(b, b.findOrdinaryReservoir())) {}

    void run(const Block& block, const Ports& ports) const {
        const float* const quality = w ? block.before(w) : nullptr;
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float Q = ports.in1[j].quantity;
            ports.out1[j] = {Q, quality ? quality[j] : 0.0F};
            ports.out2[j] = {Q, -1.0F};
        }
    }
};

struct Setter {
    const float* e;

    explicit Setter(Binder& b) : e(b.own(Series::InsDmd)) {}

    void run(const Block& block, const Ports& ports) const {
        const float* const quality = block.now(e);
        for (std::int32_t j = 0; j < block.length; ++j)
            ports.out1[j] = {ports.in1[j].quantity, quality[j]};
    }
};

struct Switch {
    float limit;
    const float* w;

    explicit Switch(Binder& b) : limit(b.size()), w(readQuality(b, b.findReservoir())) {
        if (w || b.failed()) return;
        fail(b.record(), text::kNoReservoir, b.id());
        b.giveUp();
    }

    void run(const Block& block, const Ports& ports) const {
        const float* const quality = block.before(w);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float Q = ports.in1[j].quantity;
            const bool below = quality[j] < limit;
            ports.out1[j] = {below ? Q : 0.0F, -1.0F};
            ports.out2[j] = {below ? 0.0F : Q, -1.0F};
        }
    }
};

}  // namespace

const Form Fc_Outs = kOutputs<FromReservoir, Sets::Both>;
const Form Fl_Outs = kOutputs<Setter, Sets::Out1>;
const Form Qs_Outs = kOutputs<Switch, Sets::Both>;
