#include "components/soakaway.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(Soakaway, Balance) {
    const Balance some = balance(3, 4, 0.25F, 1, 10);
    EXPECT_BITS(6.0F, some.storage);
    EXPECT_BITS(0.0F, some.overflow);
    const Balance full = balance(9, 4, 0.25F, 1, 10);
    EXPECT_BITS(10.0F, full.storage);
    EXPECT_BITS(2.0F, full.overflow);
    EXPECT_BITS(0.0F, balance(0, 4, 3, 1, 10).storage);
    EXPECT_BITS(0.0F, balance(7, 4, 0.25F, 1, 10).overflow);
}

}  // namespace
