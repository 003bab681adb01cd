#include "components/radiation_energy.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(RadiationEnergy, SignsAndFactors) {
    EXPECT_BITS(static_cast<float>(10000.0 * 0.000278 * 4.0), netEnergy(15000, 5000, 4));
    EXPECT_LT(netEnergy(5000, 15000, 4), 0.0F);
    EXPECT_BITS(static_cast<float>(10000.0 * -0.000278 * 4.0 * 0.5), deliveredEnergy(10000, 4, 0.5F));
}

}  // namespace
