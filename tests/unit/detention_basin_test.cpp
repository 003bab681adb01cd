#include "components/detention_basin.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(DetentionBasin, Outflow) {
    EXPECT_BITS(4.0F, outflowDepth(4, 1, 1));
    EXPECT_BITS(static_cast<float>(static_cast<double>(0.0001F) * 8.0 * 1440.0), outflowDepth(4, 0.0001F, 1));
    EXPECT_BITS(-4.0F, outflowDepth(-4, 0.0001F, 1));
}

TEST(DetentionBasin, WaterIsKept) {
    // 6 in, level 4 on area 2, 1.5 out per area
    EXPECT_BITS(5.5F, levelAfter(6, 1.5F, 2, 4));
    EXPECT_BITS(0.0F, levelAfter(-20, 1.5F, 2, 4));
}

}  // namespace
