#include "components/hydropower.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(Hydropower, Polynomial) {
    for (int i = 0; i < 10; ++i) {
        float one[10] = {};
        one[i] = 1.0F;
        // q = 2, H = 3
        const float powers[] = {1, 2, 3, 4, 9, 8, 27, 6, 12, 18};
        EXPECT_BITS(powers[i], power(one, 2, 3)) << i;
    }
}

TEST(Hydropower, Range) {
    EXPECT_TRUE(runs(20, 1000, 20, 20, 1000));
    EXPECT_FALSE(runs(19, 1000, 20, 30, 1000));
    EXPECT_FALSE(runs(31, 1000, 20, 30, 1000));
    EXPECT_FALSE(runs(20, 999, 20, 30, 1000));
    EXPECT_TRUE(runs(kNaN, kNaN, 20, 30, 1000));
}

}  // namespace
