#include "components/treatment_stages.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

void expect(float W, float Q, float draw, float V, Balance expected) {
    const Balance got = balance(W, Q, draw, V);
    EXPECT_BITS(expected.storage, got.storage);
    EXPECT_BITS(expected.supplied, got.supplied);
    EXPECT_BITS(expected.overflow, got.overflow);
}

TEST(TreatmentStages, Balance) {
    expect(2, 3, 4, 10, {1, 4, -0.0F});
    expect(0, 1, 4, 10, {0, 1, -0.0F});
    expect(8, 10, 2, 10, {10, 2, 6});
    expect(8, 4, 2, 10, {10, 2, -0.0F});
    expect(1, 3, 4, 10, {0, 4, -0.0F});
    expect(1, 3, 4, 0, {0, 4, -0.0F});
    expect(kNaN, 3, 4, 10, {0, kNaN, kNaN});
}

TEST(TreatmentStages, LoadIsKept) {
    // What came in leaves by both outputs, but for rounding.
    const float overflow = 6.0F;
    const float supplied = 2.0F;
    const double in = 10.0 * 7.0;
    const double out = 2.0 * 7.0 * 0.00999999 + static_cast<double>(overflow) *
                                                    static_cast<double>(spillQuality(10.0F, 7.0F, supplied, overflow));
    EXPECT_NEAR(in, out, 1e-5);
}

TEST(TreatmentStages, Treatment) {
    EXPECT_BITS(9.99F, treatedQuality(5.0F, 9.99F, 2.0F));
    EXPECT_BITS(6.4F, treatedQuality(5.0F, 10.0F, 2.0F));
    EXPECT_BITS(1.0F, treatedQuality(1.0F, 10.0F, 2.0F));
    EXPECT_BITS(kNaN, treatedQuality(0.0F, 10.0F, 0.0F));
}

}  // namespace
