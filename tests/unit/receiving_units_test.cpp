#include "components/receiving_units.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(ReceivingUnits, RefillAndLevel) {
    EXPECT_BITS(5.0F, refill(4, 2, 10, 0.5F, 1));
    EXPECT_BITS(3.0F, refill(9, 2, 10, 0.5F, 1));
    EXPECT_BITS(0.0F, refill(20, 2, 10, 0.5F, 1));
    EXPECT_BITS(7.0F, levelAfter(4, 5, 2));
    EXPECT_BITS(0.0F, levelAfter(4, 5, 20));
}

TEST(ReceivingUnits, Qualities) {
    EXPECT_BITS(20.0F, mixedQuality(4, 30, 4, 10, 0.1F));
    EXPECT_BITS(0.0F, mixedQuality(4, 30, 4, 10, 0.099999994F));
    EXPECT_BITS((0.00999999F * 1000.0F + 30.0F) * 0.5F, averagedQuality(30, 1000));
}

TEST(ReceivingUnits, Unserved) {
    EXPECT_BITS(-0.0F, unserved(5, 6));
    EXPECT_BITS(-0.0F, unserved(6, 6));
    EXPECT_BITS(3.0F, unserved(9, 6));
}

}  // namespace
