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
// What passes is kept in the Logs series of the own id, which is empty when a call starts. UM and UY are sums of it in
// single precision, the latest step first, so they must be formed anew in each step. Their exact bits matter only near
// an allowance: elsewhere a running sum in double decides, with a bound on how far apart the two can be.

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <optional>

#include "calendar.h"
#include "components/model.h"
#include "errors.h"

namespace {

struct Allowances {
    float D, M, Y;
};

float letPass(float Q, const Allowances& a, float UM, float UY) {
    if (a.M > UM && a.D > Q && a.Y > UY) return std::min(std::min(a.M - UM, Q), a.Y - UY);
    if (UM >= a.M || UY >= a.Y) return 0.0F;
    // DELIBERATE: at the daily limit what is left of month and year does not count.
    return std::min(Q, a.D);
}

// What was let pass from step `first` to before step `end`, the latest first.
float passedBetween(const Signal* log, std::int32_t first, std::int32_t end) {
    float sum = 0.0F;
    for (std::int32_t k = end - 1; k >= first; --k)
        sum += log[k].quantity;
    return sum;
}

// What was let pass since the step that a sum begins with: bounds within which passedBetween lies, or that sum itself.
//
// Adding n floats one by one is off by at most (n - 1) u A / (1 - n u) with u = 2^-24, where A is the sum of their
// magnitudes (Higham 2002, Accuracy and Stability of Numerical Algorithms, 2nd edition, section 4.2). That holds in any
// order, and for subnormal sums, as long as nothing overflows; while A is below half of what a float holds, nothing
// can. The sum and A in double are off by less than n 2^-52 A each, and so are the bounds. With the 365 terms that a
// year has at most, all of that is below n 2^-23 A, since the first error, the largest by far, is about half of it.
class Passed {
  public:
    // Takes in the steps before `end`.
    void extend(const Signal* log, std::int32_t first, std::int32_t end) {
        if (first != first_ || end < end_) *this = Passed(first);
        for (; end_ < end; ++end_)
            add(static_cast<double>(log[end_].quantity));
    }

    // Whether the sum is surely below an allowance by more than an amount that is not negative. Rounding is monotonic:
    // the difference below, rounded, is above `high_` only if the difference is, and then the allowance less the sum,
    // rounded to single, is at least the amount.
    bool leaves(float amount, float allowance) const {
        return high_ < static_cast<double>(allowance) - static_cast<double>(amount);
    }
    // Whether it surely is the allowance or more.
    bool reaches(float allowance) const { return low_ >= static_cast<double>(allowance); }

    float formAnew(const Signal* log) {
        if (low_ != high_) low_ = high_ = static_cast<double>(passedBetween(log, first_, end_));
        return static_cast<float>(low_);
    }

    Passed() = default;

  private:
    explicit Passed(std::int32_t first) : first_(first), end_(first) {}

    void add(double quantity) {
        if (quantity == 0.0) return;  // which leaves the sum as it is
        constexpr double kMost = static_cast<double>(std::numeric_limits<float>::max()) / 2.0;
        constexpr double kPerTerm = 1.0 / (1 << 23);
        sum_ += quantity;
        magnitude_ += std::abs(quantity);
        terms_ += 1.0;
        // Bounds that are not numbers decide nothing.
        const double error =
            magnitude_ < kMost ? terms_ * kPerTerm * magnitude_ : std::numeric_limits<double>::quiet_NaN();
        low_ = sum_ - error;
        high_ = sum_ + error;
    }

    std::int32_t first_ = 0;
    std::int32_t end_ = 0;
    double sum_ = 0.0;
    double magnitude_ = 0.0;
    double terms_ = 0.0;
    double low_ = 0.0;
    double high_ = 0.0;
};

// What passes, if that does not take the sums themselves.
std::optional<float> letPassSurely(float Q, const Allowances& a, const Passed& month, const Passed& year) {
    const bool isWithinDay = a.D > Q;
    const float amount = isWithinDay ? std::max(Q, 0.0F) : 0.0F;
    if (month.leaves(amount, a.M) && year.leaves(amount, a.Y)) return isWithinDay ? Q : std::min(Q, a.D);
    if (month.reaches(a.M) || year.reaches(a.Y)) return 0.0F;
    return std::nullopt;
}

struct Quota {
    Allowances allowances;
    Signal* log;
    // From one range of steps to the next.
    struct Sums {
        Passed month, year;
    };
    Sums* sums;

    explicit Quota(Binder& b) : log(b.record(Record::Logs)), sums(new (b.array<Sums>(1)) Sums) {
        if (b.timeStep() != 1.0F) b.error(text::kDailyQuota);
        if (!b.dates()) b.giveUp();
        b.checkStepOf(b.id());
        std::tie(allowances.D, allowances.M, allowances.Y) = b.specifications<61, 62, 63>();
    }

    void run(const Block& block, const Ports& ports) const {
        auto [month, year] = *sums;
        for (std::int32_t j = 0; j < block.length; ++j) {
            const std::int32_t k = block.begin + j;
            const auto [Q, q] = ports.in1[j];
            // DELIBERATE: the month's sum counts one day more than have passed of the month; the year's exactly those.
            month.extend(log, std::max(k - block.dates[j].dayOfMonth, 0), k);
            year.extend(log, std::max(k - block.dates[j].dayOfYear, 0), k);
            const auto sure = letPassSurely(Q, allowances, month, year);
            const float A = sure ? *sure : letPass(Q, allowances, month.formAnew(log), year.formAnew(log));
            ports.out1[j] = log[k] = {A, q};
            ports.out2[j] = {Q - A, q};
        }
        *sums = {month, year};
    }
};

}  // namespace

const Form Mt_Outs = kOutputs<Quota, Sets::Both>;
