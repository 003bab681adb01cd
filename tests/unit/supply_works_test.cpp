#include "components/supply_works.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(SupplyWorks, Excess) {
    EXPECT_BITS(3.0F, excess(9, 6, 1));
    EXPECT_BITS(-1.0F, excess(5, 6, 1));
    EXPECT_BITS(2.0F, excess(5, 6, 0.5F));
}

}  // namespace
