#include "components/well.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(Well, WhatItGivesAndWhatIsLeft) {
    EXPECT_BITS(2.0F, abstraction(5, 0.5F, 4, 1));
    EXPECT_BITS(3.0F, unmet(5, 0.5F, 4, 1));
    EXPECT_BITS(1.5F, abstraction(1.5F, 0.5F, 4, 1));
    EXPECT_BITS(0.0F, unmet(1.5F, 0.5F, 4, 1));
}

}  // namespace
