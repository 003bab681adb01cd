#include "components/reservoir.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(Reservoir, Balance) {
    const auto [volume, deficit, overflow] = balance(30, 8, 3, 50, 60);
    EXPECT_BITS(60.0F, volume);
    EXPECT_BITS(0.0F, deficit);
    EXPECT_BITS(9.0F, overflow);
    const Balance dry = balance(0, 58, 3, 50, 60);
    EXPECT_BITS(0.0F, dry.volume);
    EXPECT_BITS(11.0F, dry.deficit);
    EXPECT_BITS(0.0F, dry.overflow);
    EXPECT_BITS(-0.0F, balance(0, 47, 3, 50, 60).deficit);
}

TEST(Reservoir, Quality) {
    EXPECT_BITS(17.0F, mixedQuality(30, 12, 50, 20));
    EXPECT_BITS(0.0F, mixedQuality(30, 12, 0.1F, 20));
    EXPECT_BITS(0.0F, mixedQuality(30, -12, 50, 0));
    EXPECT_BITS(0.0F, mixedQuality(30, 12, kNaN, 20));
}

TEST(Reservoir, Surface) {
    EXPECT_BITS(1.5F, surface(1e9F, 0.5F, 1.0F, 0.0F));
    EXPECT_BITS(1.5F, surface(1e9F, 0.5F, 0.0F, 1.0F));
    EXPECT_BITS(0.0F, surface(1e9F, -0.5F, 0.0F, 0.0F));
    EXPECT_BITS(0.0F, seepage(1.0F, -5.0F, 2.0F, 1.0F));
}

}  // namespace
