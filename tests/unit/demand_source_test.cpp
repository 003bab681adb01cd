#include "components/demand_source.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(DemandSource, Percent) {
    EXPECT_BITS(10.0F, demand(4, 250));
    // The product first: 1e38 * 10 is beyond single.
    EXPECT_BITS(kInf, demand(1e38F, 10));
}

}  // namespace
