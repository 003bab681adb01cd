// Quota limiter, type 64 (MT): lets a flow pass within allowances per day, month and year.
//
//   A = min(M - UM, Q, Y - UY)      while UM < M, Q < D and UY < Y
//   A = 0                           when the month's or the year's allowance is used up
//   A = min(Q, D)                   else
//   out1 = (A, q)                   out2 = (Q - A, q)
//
//   Q, q       input                                                             [vol/step], quality
//   D, M, Y    specifications 61, 62 and 63: allowance per day, month and year   [vol]
//   UM, UY     what was let pass in the month and in the year so far             [vol]
//
// What is let pass is kept in the Logs series of the own id, from which both sums are formed anew in each step. A call
// starts with an empty one.

#include <algorithm>

#include "calendar.h"
#include "components/model.h"
#include "errors.h"

namespace {

float letPass(float Q, float D, float M, float Y, float UM, float UY) {
    if (M > UM && D > Q && Y > UY) return std::min(std::min(M - UM, Q), Y - UY);
    if (UM >= M || UY >= Y) return 0.0F;
    // DELIBERATE: at the daily limit what is left of month and year does not count.
    return std::min(Q, D);
}

// What was let pass in the `days` steps before this one, the latest first.
float passedBefore(const Signal* log, std::int32_t step, std::int32_t days) {
    float sum = 0.0F;
    const std::int32_t first = std::max(step - days, 0);
    for (std::int32_t k = step - 1; k >= first; --k)
        sum += log[k].quantity;
    return sum;
}

struct Quota {
    float D, M, Y;
    Signal* log;

    explicit Quota(Binder& b) : log(b.record(Record::Logs)) {
        if (b.timeStep() != 1.0F) b.error(text::kDailyQuota);
        if (!b.dates()) b.giveUp();
        b.checkStepOf(b.id());
        std::tie(D, M, Y) = b.specifications<61, 62, 63>();
    }

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j) {
            const std::int32_t k = block.begin + j;
            const auto [Q, q] = ports.in1[j];
            // DELIBERATE: the month's sum counts one day more than have passed of the month; the year's exactly those.
            const float UM = passedBefore(log, k, block.dates[j].dayOfMonth);
            const float UY = passedBefore(log, k, block.dates[j].dayOfYear);
            const float A = letPass(Q, D, M, Y, UM, UY);
            ports.out1[j] = log[k] = {A, q};
            ports.out2[j] = {Q - A, q};
        }
    }
};

}  // namespace

const Form Mt_Outs = kOutputs<Quota, Sets::Both>;
