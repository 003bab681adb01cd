#include "components/appliance.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(Appliance, Uses) {
    EXPECT_BITS(10.0F, usesPerStep(2, 5, 1, 1));
    EXPECT_BITS(2.5F, usesPerStep(2, 5, 0.5F, 0.5F));
    EXPECT_BITS(45.0F, volumePerStep(2, 5, 4.5F, 1, 1));
}

}  // namespace
