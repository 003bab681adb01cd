#include "components/membrane.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(Membrane, LoadIsKept) {
    const float Q1 = permeate(5, 2);
    EXPECT_BITS(0.7F * 2.0F, Q1);
    const double out = static_cast<double>(Q1) * 0.00999999 * 7.0 +
                       static_cast<double>(5.0F - Q1) * static_cast<double>(concentrateQuality(5, 7, Q1));
    EXPECT_NEAR(35.0, out, 1e-5);
    EXPECT_BITS(kNaN, concentrateQuality(0, 7, 0));
}

}  // namespace
