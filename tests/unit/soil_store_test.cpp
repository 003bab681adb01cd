#include "components/soil_store.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

// Thornthwaite (1948) at 6 degrees, where (10 T / I) is 1 and the exponent drops out: 16 mm in 30 days of 12 hours.
TEST(SoilStore, ThornthwaiteWhereItsExponentCancels) {
    EXPECT_BITS(static_cast<float>(16.0 / 30.0), thornthwaite(6.0F, 1.0F));
    EXPECT_NEAR(0.53333, static_cast<double>(thornthwaite(6.0F, 1.0F)), 5e-6);
    EXPECT_BITS(0.0F, thornthwaite(0.0F, 1.0F));
    EXPECT_TRUE(std::isnan(thornthwaite(-0.5F, 1.0F)));
}

TEST(SoilStore, WaterIsKept) {
    const Soil soil{100.0F, 0.125F, 0.5F, 1.0F, 0.0F, 0.25F};
    const Balance day = balance(16.0F, 0.0F, 96.0F, soil, 1.0F);
    EXPECT_EQ(16.0F + 96.0F, day.level + day.drainage + day.outflow);
    EXPECT_EQ(12.5F, day.drainage);
    EXPECT_EQ(37.5F + 12.0F, day.outflow);
}

}  // namespace
