// Delay, type 51 (SL): what reaches it leaves it some steps later. It is also where the ordering cuts a loop.
//
//   out = input of step k - d; nothing, at quality 0, while k < d
//
//   k   this step
//   d   size, rounded: number of steps; 0 passes the input on at once
//
// The inputs are kept in the Logs series of the delay's own id. A call starts with an empty one.

#include "components/model.h"
#include "errors.h"

namespace {

struct Queue {
    std::int32_t d;
    AUEglobals* Globals;
    Signal* log;

    explicit Queue(Binder& b) : d(nint(b.size())), Globals(b.record()), log(b.recordNow(Record::Logs)) {}

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j) {
            const std::int32_t k = block.begin + j;
            log[k] = ports.in1[j];
            if (d < 0) return error(Globals, text::kNegativeDelay);
            ports.out1[j] = k < d ? Signal{0.0F, 0.0F} : log[k - d];
        }
    }
};

}  // namespace

const Form Sl_Outs = kOutputs<Queue, Sets::Out1>;
