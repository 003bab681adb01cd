#include "components/links.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(Links, LossesAreTakenOffOrAdded) {
    EXPECT_BITS(75.0F, reduced(0.25F, 100));
    EXPECT_BITS(125.0F, increased(0.25F, 100));
    EXPECT_BITS(-50.0F, reduced(1.5F, 100));
}

}  // namespace
