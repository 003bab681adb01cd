#include "components/quota_limiter.cpp"

#include <gtest/gtest.h>

#include <array>

#include "bits_equal.h"

namespace {

TEST(QuotaLimiter, Rules) {
    EXPECT_BITS(4.0F, letPass(4, 10, 100, 1000, 0, 0));
    EXPECT_BITS(10.0F, letPass(12, 10, 100, 1000, 97, 0));
    EXPECT_BITS(3.0F, letPass(4, 10, 100, 1000, 97, 0));
    EXPECT_BITS(2.0F, letPass(4, 10, 100, 1000, 97, 998));
    EXPECT_BITS(0.0F, letPass(4, 10, 100, 1000, 100, 0));
    EXPECT_BITS(0.0F, letPass(12, 10, 100, 1000, 0, 1000));
    EXPECT_BITS(10.0F, letPass(10, 10, 100, 1000, 0, 0));
}

TEST(QuotaLimiter, LatestFirst) {
    const std::array<Signal, 3> log{{{16777216, 0}, {1, 0}, {1, 0}}};
    EXPECT_BITS(16777218.0F, passedBefore(log.data(), 3, 10));
    EXPECT_BITS(2.0F, passedBefore(log.data(), 3, 2));
    EXPECT_BITS(0.0F, passedBefore(log.data(), 0, 10));
    EXPECT_BITS(0.0F, passedBefore(log.data(), 3, 0));
}

}  // namespace
