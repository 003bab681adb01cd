#include "components/model.h"

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
    const auto factors = findMultiplier(&record, &run, 5);
    ASSERT_TRUE(factors && *factors);
    EXPECT_EQ(**factors, 3.0F);
    EXPECT_FALSE(findMultiplier(&record, &run, 6));
    EXPECT_STREQ(record.ErrMsg, "Compnt id wasn't found in CompntId!");
}

TEST_F(Lookup, MultiplierWithoutItsSeries) {
    InstInfo run;
    run.TotNumComp.push_back({0, {3.0F}});
    run.CompntId = {5, 6};
    run.SeqId = {1, -1};
    EXPECT_FALSE(findMultiplier(&record, &run, 5));
    EXPECT_STREQ(record.ErrMsg, "Mult series not found!");
    EXPECT_EQ(findMultiplier(&record, &run, 6), nullptr);
    EXPECT_EQ(findMultiplier(&record, nullptr, 5), nullptr);
}

class Binding : public Lookup {
  protected:
    Binding() {
        record.WatQuant = &entry;
        record.nWatQuant = 1;
        record.nSteps = 3;
        step.id = 8;
        step.row = &row;
        step.Globals = &record;
    }

    std::array<float, 3> values{1.0F, 2.0F, 3.0F};
    SeriesEntry entry{8, values.data()};
    ComponentRow row{8.0F, 32.0F, 0.0F, 0.0F, 0.0F};
    Step step;
};

TEST_F(Binding, StepBefore) {
    record.CurStep = 0;
    Binder first(step);
    EXPECT_EQ(*first.thisStep().before(first.before(Series::WatQuant)), 1.0F);
    record.CurStep = 2;
    Binder later(step);
    EXPECT_EQ(*later.thisStep().before(later.before(Series::WatQuant)), 2.0F);
    record.CurStep = 3;
    Binder beyond(step);
    EXPECT_EQ(*beyond.thisStep().before(beyond.before(Series::WatQuant)), 3.0F);
    EXPECT_FALSE(beyond.failed());
    beyond.after(Series::WatQuant);
    EXPECT_TRUE(beyond.failed());
    EXPECT_STREQ(record.ErrMsg, "Step 3 is outside the series of component with id=8!");
}

TEST_F(Binding, TheFirstFailureStands) {
    Binder binder(step);
    EXPECT_EQ(binder.own(Series::InsDmd), nullptr);
    const std::string first = record.ErrMsg;
    EXPECT_EQ(first, "Series of type InsDmd of component with id=8 not found!");
    EXPECT_EQ(binder.before(Series::WatQuant), nullptr);
    EXPECT_EQ(binder.find(8), nullptr);
    EXPECT_EQ(binder.specifications<12>(), std::tuple(0.0F));
    EXPECT_EQ(record.ErrMsg, first);
}

TEST_F(Binding, NotesWhatIsReadAndWritten) {
    Notes notes;
    notes.task = 7;
    Binder binder(step, &notes);
    binder.before(Series::WatQuant);
    binder.after(Series::WatQuant);
    ASSERT_EQ(notes.accesses.size(), 2U);
    EXPECT_EQ(notes.accesses[0].memory, values.data());
    EXPECT_FALSE(notes.accesses[0].writes);
    EXPECT_TRUE(notes.accesses[1].writes);
    EXPECT_EQ(notes.accesses[1].task, 7U);
}

TEST(Booking, AddsToEachStepOfTheBlock) {
    std::array<float, 4> sums{1.0F, 1.0F, 1.0F, 1.0F};
    const std::array<float, 4> factors{1.0F, 2.0F, 3.0F, 4.0F};
    const Block block{1, 2, nullptr};
    block.book(sums.data(), factors.data(), [](float factor) { return 10.0F * factor; });
    EXPECT_EQ(sums, (std::array{1.0F, 21.0F, 31.0F, 1.0F}));
    block.book(sums.data(), [](std::int32_t j) { return static_cast<float>(j); });
    EXPECT_EQ(sums, (std::array{1.0F, 21.0F, 32.0F, 1.0F}));
    block.bookConstant(sums.data(), 0.5F);
    EXPECT_EQ(sums, (std::array{1.0F, 21.5F, 32.5F, 1.0F}));
    block.book(nullptr, factors.data(), [](float factor) { return factor; });
}

}  // namespace
