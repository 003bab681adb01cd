// Formulas that are shared or stand behind a header of their own.
#include <gtest/gtest.h>

#include <cmath>

#include "bits_equal.h"
#include "components/head.h"

namespace {

TEST(Head, Curve) {
    EXPECT_BITS(20.0F, head(0.0F, 20.0F, 5.0F, 7.0F));
    EXPECT_BITS(32.0F, head(1e9F, 20.0F, 5.0F, 7.0F));
    EXPECT_BITS(0.0F, head(1e9F, -20.0F, 0.0F, 0.0F));
    EXPECT_BITS(kNaN, head(kNaN, 20.0F, 5.0F, 7.0F));
    // Squared before it is scaled, in double: 3e20 squared is beyond single.
    EXPECT_BITS(static_cast<float>(9e40 * 1e-10 / 1e18), head(3e20F, 0.0F, 0.0F, 1e-10F));
}

}  // namespace
