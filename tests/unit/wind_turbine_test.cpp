#include "components/wind_turbine.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(WindTurbine, Curve) {
    EXPECT_BITS(-0.0F, generation(0, 1, 1));
    // x = 1 where the wind is 1 / 0.28 of the divisor: (103.6 - 3.96) / 100
    EXPECT_NEAR(-0.9964, static_cast<double>(generation(1.0F / 0.28F, 1, 1)), 1e-6);
    EXPECT_BITS(-0.0F, generation(kNaN, 1, 1));
    EXPECT_LT(generation(2000, 1, 1), generation(1000, 1, 1));
}

}  // namespace
