#include "components/quota_limiter.cpp"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <random>
#include <string>
#include <vector>

#include "bits_equal.h"

namespace {

TEST(QuotaLimiter, Rules) {
    const Allowances allowances{10, 100, 1000};
    EXPECT_BITS(4.0F, letPass(4, allowances, 0, 0));
    EXPECT_BITS(10.0F, letPass(12, allowances, 97, 0));
    EXPECT_BITS(3.0F, letPass(4, allowances, 97, 0));
    EXPECT_BITS(2.0F, letPass(4, allowances, 97, 998));
    EXPECT_BITS(0.0F, letPass(4, allowances, 100, 0));
    EXPECT_BITS(0.0F, letPass(12, allowances, 0, 1000));
    EXPECT_BITS(10.0F, letPass(10, allowances, 0, 0));
}

TEST(QuotaLimiter, LatestFirst) {
    const std::array<Signal, 3> log{{{16777216, 0}, {1, 0}, {1, 0}}};
    EXPECT_BITS(16777218.0F, passedBetween(log.data(), 0, 3));
    EXPECT_BITS(2.0F, passedBetween(log.data(), 1, 3));
    EXPECT_BITS(0.0F, passedBetween(log.data(), 3, 3));
}

// The running sum must leave open what the sum in single precision, off by as much as it can be, decides.
TEST(QuotaLimiter, BoundsHoldWhereAllRoundingsGoOneWay) {
    std::vector<Signal> log(365, {std::ldexp(1.0F, -24), 0});
    log.back().quantity = 1.0F;
    const float sum = passedBetween(log.data(), 0, 365);
    EXPECT_BITS(1.0F, sum);  // without 364 times 2^-24
    Passed passed;
    passed.extend(log.data(), 0, 365);
    EXPECT_FALSE(passed.reaches(std::nextafter(sum, 2.0F)));
    EXPECT_FALSE(passed.leaves(0.0F, 1.0F + std::ldexp(364.0F, -24)));
    EXPECT_TRUE(passed.leaves(0.0F, 1.0F + std::ldexp(3.1F * 365.0F, -24)));
    EXPECT_TRUE(passed.reaches(1.0F - std::ldexp(1.1F * 365.0F, -24)));
}

// Dates of consecutive steps. Where clocks change, a step at midnight can be the day before or the same day again.
std::vector<Date> makeDates(std::int32_t steps, unsigned seed) {
    using namespace std::chrono;
    std::mt19937 random(seed);
    sys_days day = sys_days{year{1970 + static_cast<int>(random() % 60)} / 1 / 1} + days{random() % 365};
    const bool areOdd = random() % 3 == 0;
    std::vector<Date> dates;
    for (std::int32_t k = 0; k < steps; ++k, day += days{1}) {
        if (areOdd && random() % 40 == 0) day += days{random() % 2 == 0 ? 1 : -1};
        const year_month_day date{day};
        const auto ofYear = static_cast<std::int32_t>((day - sys_days{date.year() / 1 / 1}).count());
        dates.push_back({static_cast<std::int32_t>(static_cast<unsigned>(date.day())), ofYear});
    }
    return dates;
}

// What flows in, and about how much is allowed.
struct Inflow {
    const char* name;
    float (*next)(std::mt19937& random);
    float mean;
    double mostAnew = 0.06;  // the share of steps that may take sums formed anew
};

float between(std::mt19937& random, float low, float high) {
    return std::uniform_real_distribution<float>(low, high)(random);
}

float oneOf(std::mt19937& random, std::initializer_list<float> values) {
    return values.begin()[random() % values.size()];
}

using Limits = std::numeric_limits<float>;

constexpr Inflow kInflows[] = {
    {"uniform", [](std::mt19937& random) { return between(random, 0.0F, 2.0F); }, 1.0F},
    {"constant", [](std::mt19937&) { return 0.1F; }, 0.1F},
    {"whole numbers", [](std::mt19937& random) { return static_cast<float>(random() % 9); }, 4.0F},
    {"tiny and huge",
     [](std::mt19937& random) { return std::ldexp(between(random, 0.5F, 1.0F), static_cast<int>(random() % 80) - 40); },
     1e10F},
    {"just rounded away",
     [](std::mt19937& random) {
         return oneOf(random, {1.0F, 0x1p-24F, 0x1.8p-24F, 0x1p-23F, 0x1.000002p-24F});
     },
     0.2F},
    {"both signs", [](std::mt19937& random) { return between(random, -1.0F, 1.1F); }, 0.05F},
    {"cancelling",
     [](std::mt19937& random) {
         return oneOf(random, {1e6F, -1e6F, 0.3F, -0.0F, 1e-6F});
     },
     0.1F},
    {"subnormal", [](std::mt19937& random) { return static_cast<float>(random() % 50) * Limits::denorm_min(); },
     25.0F * Limits::denorm_min()},
    {"near overflow",
     [](std::mt19937& random) {
         return oneOf(random, {0.9F, -0.8F, 0.001F}) * Limits::max();
     },
     0.02F * Limits::max(), 1.0},
    {"mostly none", [](std::mt19937& random) { return random() % 9 == 0 ? between(random, 0.0F, 9.0F) : 0.0F; }, 0.5F},
    {"not numbers",
     [](std::mt19937& random) {
         if (random() % 90 != 0) return between(random, 0.0F, 2.0F);
         return oneOf(random, {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()});
     },
     1.0F, 1.0},
};

struct Counted {
    int steps = 0;
    int sure = 0;
    double anew() const { return 1.0 - static_cast<double>(sure) / steps; }
};

// Runs a limiter by running sums and compares each step with the plain sums.
Counted compare(const std::vector<float>& inflow, const std::vector<Date>& dates, const Allowances& allowances) {
    std::vector<Signal> log(inflow.size());
    Passed month, year;
    Counted counted;
    for (std::int32_t k = 0; k < static_cast<std::int32_t>(inflow.size()); ++k) {
        const auto [dayOfMonth, dayOfYear] = dates[static_cast<std::size_t>(k)];
        const float Q = inflow[static_cast<std::size_t>(k)];
        const float UM = passedBetween(log.data(), std::max(k - dayOfMonth, 0), k);
        const float UY = passedBetween(log.data(), std::max(k - dayOfYear, 0), k);
        month.extend(log.data(), std::max(k - dayOfMonth, 0), k);
        year.extend(log.data(), std::max(k - dayOfYear, 0), k);
        const float expected = letPass(Q, allowances, UM, UY);
        const auto sure = letPassSurely(Q, allowances, month, year);
        if (sure) {
            EXPECT_BITS(expected, *sure) << "step " << k;
        } else {
            EXPECT_BITS(UM, month.formAnew(log.data())) << "step " << k;
            EXPECT_BITS(UY, year.formAnew(log.data())) << "step " << k;
        }
        log[static_cast<std::size_t>(k)].quantity = expected;
        ++counted.steps;
        if (sure) ++counted.sure;
        if (testing::Test::HasFailure()) break;
    }
    return counted;
}

// Allowances that the sums of this inflow come close to: what has passed in a month or a year with the first ones, to
// within a few units in the last place.
Allowances closeBy(const std::vector<float>& inflow, const std::vector<Date>& dates, Allowances allowances,
                   std::mt19937& random) {
    std::vector<Signal> log(inflow.size());
    for (std::size_t i = 0; i < inflow.size(); ++i)
        log[i].quantity = std::min(inflow[i], allowances.D);
    const std::size_t end = random() % inflow.size();
    const auto k = static_cast<std::int32_t>(end);
    allowances.M = passedBetween(log.data(), std::max(k - dates[end].dayOfMonth, 0), k);
    allowances.Y = passedBetween(log.data(), std::max(k - dates[end].dayOfYear, 0), k);
    for (float* const allowance : {&allowances.M, &allowances.Y}) {
        if (random() % 3 == 0) *allowance += inflow[end];
        for (std::uint32_t i = random() % 4; i > 0; --i)
            *allowance = std::nextafter(*allowance, random() % 2 == 0 ? Limits::max() : -Limits::max());
    }
    if (random() % 4 == 0) allowances.M = Limits::infinity();
    if (random() % 4 == 0) allowances.Y = Limits::infinity();
    return allowances;
}

struct Shares {
    Counted apart;  // allowances far from the sums
    Counted close;
};

Shares compareMany(const Inflow& inflow, unsigned runs) {
    Shares shares;
    for (unsigned seed = 1; seed <= runs; ++seed) {
        SCOPED_TRACE(std::string(inflow.name) + ", seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const std::vector<Date> dates = makeDates(900, seed);
        std::vector<float> flow(dates.size());
        for (float& quantity : flow)
            quantity = inflow.next(random);
        Allowances allowances{inflow.mean * between(random, 0.5F, 4.0F), inflow.mean * between(random, 5.0F, 50.0F),
                              inflow.mean * between(random, 50.0F, 600.0F)};
        for (Counted* const counted : {&shares.apart, &shares.close}) {
            const Counted once = compare(flow, dates, allowances);
            counted->steps += once.steps;
            counted->sure += once.sure;
            if (testing::Test::HasFailure()) return shares;
            allowances = closeBy(flow, dates, allowances, random);
        }
    }
    return shares;
}

TEST(QuotaLimiter, RunningSumsAgainstPlainOnes) {
    for (const Inflow& inflow : kInflows) {
        const Shares shares = compareMany(inflow, 60);
        if (HasFailure()) return;
        SCOPED_TRACE(inflow.name);
        EXPECT_LE(shares.apart.anew(), inflow.mostAnew);
        EXPECT_LE(shares.close.anew(), inflow.mostAnew);
        const int formedAnew = shares.apart.steps - shares.apart.sure + shares.close.steps - shares.close.sure;
        EXPECT_GT(formedAnew, 10);
        RecordProperty(inflow.name, formedAnew);
    }
}

}  // namespace
