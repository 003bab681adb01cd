#include "components/lookup.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>

#include "bits_equal.h"
#include "components.h"

namespace {

constexpr std::int32_t kNoInteger = std::numeric_limits<std::int32_t>::min();

TEST(Rounding, HalfAwayFromZero) {
    EXPECT_EQ(nint(0.5F), 1);
    EXPECT_EQ(nint(-0.5F), -1);
    EXPECT_EQ(nint(2.5F), 3);
    EXPECT_EQ(nint(-2.5F), -3);
    EXPECT_EQ(nint(0.49999997F), 0);
    EXPECT_EQ(nint(-0.0F), 0);
    EXPECT_EQ(nint(30.4F), 30);
}

TEST(Rounding, HalfIsAddedInDouble) {
    // In single 8388609 + 0.5 would be 8388610.
    EXPECT_EQ(nint(8388609.0F), 8388609);
    EXPECT_EQ(nint(16777215.0F), 16777215);
}

TEST(Rounding, WhatNoIntegerHolds) {
    EXPECT_EQ(nint(kNaN), kNoInteger);
    EXPECT_EQ(nint(kInf), kNoInteger);
    EXPECT_EQ(nint(-kInf), kNoInteger);
    EXPECT_EQ(nint(2147483648.0F), kNoInteger);
    EXPECT_EQ(nint(-2147483648.0F), kNoInteger);
    EXPECT_EQ(nint(2147483520.0F), 2147483520);
    EXPECT_EQ(nint(2147483647.4), 2147483647);
    EXPECT_EQ(nint(2147483647.5), kNoInteger);
    EXPECT_EQ(nint(-2147483648.4), kNoInteger);
}

TEST(Rounding, Truncation) {
    EXPECT_EQ(truncated(2.9), 2);
    EXPECT_EQ(truncated(-2.9), -2);
    EXPECT_EQ(truncated(static_cast<double>(kNaN)), kNoInteger);
    EXPECT_EQ(truncated(1e10), kNoInteger);
}

struct Lookup : testing::Test {
    AUEglobals record{};
    std::array<SpecificationRow, 4> specifications{{
        {0, 0, 2, 0, 1, 1, 12, 1.5F, 0},
        {0, 0, 2, 0, 0, 1, 13, 9.0F, 0},  // a selector is not 1
        {0, 0, 2, 0, 1, 1, 13, 2.5F, 0},
        {0, 0, 2, 0, 1, 1, 12, 7.0F, 0},
    }};

    Lookup() {
        record.TechSpecs = specifications.data();
        record.nTechSpecs = static_cast<std::int32_t>(specifications.size());
    }
};

TEST_F(Lookup, SpecificationsAreChained) {
    const auto found = readSpecifications<12, 13>(&record, 2);
    ASSERT_TRUE(found);
    EXPECT_EQ((*found)[0], 1.5F);
    EXPECT_EQ((*found)[1], 2.5F);
    // After 13 the search for 12 begins one row before it, and meets the later row.
    const auto later = readSpecifications<13, 12>(&record, 2);
    ASSERT_TRUE(later);
    EXPECT_EQ((*later)[1], 7.0F);
    EXPECT_EQ(record.ErrFlag, 0);
}

TEST_F(Lookup, MissingSpecificationIsNamed) {
    EXPECT_FALSE((readSpecifications<12, 14, 15>(&record, 2)));
    EXPECT_STREQ(record.ErrMsg, "Specification 14 of brand 2 not found!");
    EXPECT_EQ(record.ErrFlag, 1);
}

// The two texts that no consistent record produces: the sets of ids and of products are the library's own.
TEST_F(Lookup, MultiplierOfAnUnknownComponent) {
    InstInfo run;
    run.TotNumComp.push_back({0, {3.0F}});
    run.CompntId = {5};
    run.SeqId = {0};
    record.nSteps = 1;
    EXPECT_EQ(readMultiplier(&record, &run, 5), 3.0F);
    EXPECT_FALSE(readMultiplier(&record, &run, 6));
    EXPECT_STREQ(record.ErrMsg, "Compnt id wasn't found in CompntId!");
}

TEST_F(Lookup, MultiplierWithoutItsSeries) {
    InstInfo run;
    run.TotNumComp.push_back({0, {3.0F}});
    run.CompntId = {5, 6};
    run.SeqId = {1, -1};
    record.nSteps = 1;
    EXPECT_FALSE(readMultiplier(&record, &run, 5));
    EXPECT_STREQ(record.ErrMsg, "Mult series not found!");
    EXPECT_EQ(readMultiplier(&record, &run, 6), 1.0F);
    EXPECT_EQ(readMultiplier(&record, nullptr, 5), 1.0F);
}

TEST_F(Lookup, StepBefore) {
    std::array<float, 3> values{1.0F, 2.0F, 3.0F};
    SeriesEntry entry{8, values.data()};
    record.WatQuant = &entry;
    record.nWatQuant = 1;
    record.nSteps = 3;
    record.CurStep = 0;
    EXPECT_EQ(readBefore(&record, Series::WatQuant, 8), 1.0F);
    record.CurStep = 2;
    EXPECT_EQ(readBefore(&record, Series::WatQuant, 8), 2.0F);
    record.CurStep = 3;
    EXPECT_EQ(readBefore(&record, Series::WatQuant, 8), 3.0F);
    EXPECT_FALSE(readNow(&record, Series::WatQuant, 8));
    EXPECT_STREQ(record.ErrMsg, "Step 3 is outside the series of component with id=8!");
}

}  // namespace
