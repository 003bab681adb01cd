#include "components/thresholds.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

void expect(float first, float second, Shares got) {
    EXPECT_BITS(first, got.first);
    EXPECT_BITS(second, got.second);
}

TEST(Thresholds, Divider) {
    expect(3, 5, divide(8, 3, 1));
    expect(8, 0, divide(8, 9, 1));
    expect(0, 8, divide(8, 0, 1));
    expect(0, 8, divide(8, 3, -1));
    expect(6, 2, divide(8, -25, 1));
    expect(0, 8, divide(8, -150, 1));
    expect(kNaN, kNaN, divide(8, kNaN, 1));
}

TEST(Thresholds, Switch) {
    expect(8, 0, switchOver(8, 3, 3));
    expect(0, 8, switchOver(8, 4, 3));
    expect(8, 0, switchOver(8, kNaN, 3));
}

}  // namespace
