#include "components/runoff_surfaces.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(RunoffSurfaces, Impervious) {
    EXPECT_BITS((1.0F - 0.1F) * 20.0F, runoffImpervious(10.0F, 0.1F, 2.0F));
    EXPECT_BITS(0.0F, runoffImpervious(10.0F, 1.0F, 2.0F));
}

TEST(RunoffSurfaces, BucketKeepsWater) {
    const Bucket full = bucket(20.0F, 8.0F, 10.0F, 0.25F, 0.125F, 1.0F);
    EXPECT_BITS(10.0F, full.depth);
    EXPECT_BITS(15.0F, full.runoff);  // 20 + 8 - 3 - 10
    const Bucket dry = bucket(1.0F, 8.0F, 10.0F, 1.0F, 0.5F, 1.0F);
    EXPECT_BITS(0.0F, dry.depth);
    EXPECT_BITS(0.0F, dry.runoff);
}

}  // namespace
