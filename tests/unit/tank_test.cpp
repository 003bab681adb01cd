#include "components/tank.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

void expect(float inflow, float S, float demand, float V, Balance expected) {
    const Balance got = balance(inflow, S, demand, V);
    EXPECT_BITS(expected.storage, got.storage);
    EXPECT_BITS(expected.deficit, got.deficit);
    EXPECT_BITS(expected.overflow, got.overflow);
}

TEST(Tank, Balance) {
    expect(5, 3, 10, 20, {0, 2, -0.0F});
    expect(15, 10, 5, 12, {12, 0, 8});
    expect(5, 3, 8, 20, {0, -0.0F, -0.0F});
    expect(5, 3, 2, 6, {6, 0, -0.0F});
    expect(5, 0, 2, 0, {0, 0, 3});
    expect(5, 0, 5, 0, {0, -0.0F, -0.0F});
}

TEST(Tank, NoNumbers) {
    expect(kNaN, 3, 2, 6, {0, kNaN, -0.0F});
    expect(5, 3, 2, kNaN, {kNaN, 0, kNaN});
}

}  // namespace
