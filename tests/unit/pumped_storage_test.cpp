#include "components/pumped_storage.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

TEST(PumpedStorage, Release) {
    EXPECT_BITS(static_cast<float>(10.0 * 3.6e6 / 37.0 / 10000.0 * 1000.0), moved(10, 20, 57.9F, 1e9F));
    EXPECT_BITS(static_cast<float>(10.0 * 3.6e6 / 37.0 / 10000.0 * 1000.0), moved(10, 57.9F, 20, 1e9F));
    EXPECT_BITS(7.0F, moved(10, 20, 57.9F, 7));
    EXPECT_BITS(7.0F, moved(10, 20, 20.9F, 7));
    EXPECT_BITS(7.0F, moved(0, 20, 20.9F, 7));
}

}  // namespace
