// EXPECT_BITS(a, b): the same float, to the sign of a zero; any NaN equals any NaN.
#ifndef KESTO_TESTS_BITS_EQUAL_H
#define KESTO_TESTS_BITS_EQUAL_H

#include <gtest/gtest.h>

#include <limits>

#include "bits.h"

#define EXPECT_BITS(expected, got) EXPECT_EQ(written(expected), written(got))

inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInf = std::numeric_limits<float>::infinity();

#endif
