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
#include "components.h"
#include "components/lookup.h"
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

}  // namespace

void Mt_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const Signal* const log = findRecord(Globals, Record::Logs, id);
    if (!log) return;
    if (Globals->TimeStep != 1.0F) return error(Globals, text::kDailyQuota);
    const auto date = calendarOfStep(Globals);
    if (!date || !checkStep(Globals, Globals->CurStep, id)) return;
    // DELIBERATE: the month's sum counts one day more than have passed of the month; the year's sum exactly those.
    const float UM = passedBefore(log, Globals->CurStep, date->tm_mday);
    const float UY = passedBefore(log, Globals->CurStep, date->tm_yday);
    const auto specifications = readSpecifications<61, 62, 63>(Globals, row);
    if (!specifications) return;
    const auto [D, M, Y] = *specifications;
    const float A = letPass(in1.quantity, D, M, Y, UM, UY);
    *out1 = {A, in1.quality};
    *out2 = {in1.quantity - A, in1.quality};
    Lg_Append(id, Globals, *out1);
}
