#include "components/model.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstring>
#include <limits>
#include <optional>
#include <random>
#include <vector>

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

struct Keyed {
    float key;
};
float keyOf(const Keyed& row) {
    return row.key;
}

// Whatever the length of the table, and so whether it has an index.
TEST(RowFinder, FindsWhatAScanFinds) {
    std::mt19937 random(1);
    constexpr std::array<float, 8> odd{0.0F, -0.0F, kNaN, kInf, -kInf, 0.1F, 16777216.0F, -1.0F};
    int found = 0;
    for (int round = 0; round < 300; ++round) {
        std::vector<Keyed> rows(random() % 60);
        for (Keyed& row : rows)
            row.key = random() % 3 == 0 ? odd[random() % odd.size()] : static_cast<float>(random() % 30);
        const auto count = static_cast<std::int32_t>(rows.size());
        const RowFinder<Keyed, keyOf> quick(rows.data(), count);
        const RowFinder<Keyed, keyOf> scan(rows.data(), count, false);
        for (std::int32_t from = 0; from <= count; from += 3) {
            for (int wanted = -1; wanted < 38; ++wanted) {
                const float key = wanted < 30 ? static_cast<float>(wanted) : odd[static_cast<std::size_t>(wanted) - 30];
                std::int32_t expected = -1;
                for (std::int32_t i = from; i < count && expected < 0; ++i) {
                    if (rows[static_cast<std::size_t>(i)].key == key) expected = i;
                }
                ASSERT_EQ(quick.first(key, from), expected) << key << " from " << from;
                ASSERT_EQ(scan.first(key, from), expected) << key << " from " << from;
                found += expected >= 0 ? 1 : 0;
            }
        }
    }
    EXPECT_GT(found, 10000);
}

TEST(RowFinder, TablesOfNothing) {
    EXPECT_EQ((RowFinder<Keyed, keyOf>(nullptr, 100).first(0.0F)), -1);
    const Keyed row{1.0F};
    EXPECT_EQ((RowFinder<Keyed, keyOf>(&row, -5).first(1.0F)), -1);
    EXPECT_EQ((RowFinder<Keyed, keyOf>().first(1.0F)), -1);
}

// Rows that count for nothing, and rows that all have one key, must not make an index slow.
TEST(RowFinder, ManyRowsWithOneKey) {
    std::vector<Keyed> rows(200000, Keyed{kNaN});
    for (std::size_t i = 0; i < rows.size(); i += 2)
        rows[i].key = 7.0F;
    const auto begin = std::chrono::steady_clock::now();
    const RowFinder<Keyed, keyOf> finder(rows.data(), static_cast<std::int32_t>(rows.size()));
    for (int i = 0; i < 100000; ++i)
        ASSERT_EQ(finder.first(7.0F), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
}

// Keys are read anew where they may change, and only there.
TEST(RowFinder, KeysThatChange) {
    std::vector<Keyed> rows(20, Keyed{1.0F});
    const RowFinder<Keyed, keyOf> scan(rows.data(), 20, false);
    rows[5].key = 2.0F;
    EXPECT_EQ(scan.first(2.0F), 5);
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
    Lookups lookups(const InstInfo* run = nullptr) { return {&record, run, nullptr}; }
};

TEST_F(Lookup, SpecificationsAreChained) {
    const auto found = lookups().readSpecifications<12, 13>(2);
    ASSERT_TRUE(found);
    EXPECT_EQ((*found)[0], 1.5F);
    EXPECT_EQ((*found)[1], 2.5F);
    // After 13 the search for 12 begins one row before it, and meets the later row.
    const auto later = lookups().readSpecifications<13, 12>(2);
    ASSERT_TRUE(later);
    EXPECT_EQ((*later)[1], 7.0F);
    EXPECT_EQ(record.ErrFlag, 0);
}

TEST_F(Lookup, MissingSpecificationIsNamed) {
    EXPECT_FALSE((lookups().readSpecifications<12, 14, 15>(2)));
    EXPECT_STREQ(record.ErrMsg, "Specification 14 of brand 2 not found!");
    EXPECT_EQ(record.ErrFlag, 1);
}

// The two texts that no consistent record produces: the sets of ids and of products are the library's own.
TEST_F(Lookup, MultiplierOfAnUnknownComponent) {
    InstInfo run;
    run.TotNumComp.push_back({0, {3.0F}});
    run.CompntId = {5};
    run.SeqId = {0};
    const auto factors = lookups(&run).findMultiplier(5);
    ASSERT_TRUE(factors && *factors);
    EXPECT_EQ(**factors, 3.0F);
    EXPECT_FALSE(lookups(&run).findMultiplier(6));
    EXPECT_STREQ(record.ErrMsg, "Compnt id wasn't found in CompntId!");
}

TEST_F(Lookup, MultiplierWithoutItsSeries) {
    InstInfo run;
    run.TotNumComp.push_back({0, {3.0F}});
    run.CompntId = {5, 6};
    run.SeqId = {1, -1};
    EXPECT_FALSE(lookups(&run).findMultiplier(5));
    EXPECT_STREQ(record.ErrMsg, "Mult series not found!");
    EXPECT_EQ(lookups(&run).findMultiplier(6), nullptr);
    EXPECT_EQ(lookups().findMultiplier(5), nullptr);
}

// Counts are read anew. Two more texts: a record would have to shrink while a call is looking.
TEST_F(Lookup, AnEntryBeyondTheCount) {
    float value = 1.0F;
    Signal signal{};
    SeriesEntry states[] = {{4, &value}, {5, &value}};
    SignalSeriesEntry logs[] = {{4, &signal}, {5, &signal}};
    record.nSteps = 1;
    record.WatQuant = states;
    record.Logs = logs;
    record.nWatQuant = record.nLogs = 2;
    const Lookups found = lookups();
    record.nWatQuant = record.nLogs = 1;
    EXPECT_EQ(found.writableSeries(Series::WatQuant, 4), &value);
    EXPECT_FALSE(found.writableSeries(Series::WatQuant, 5));
    EXPECT_STREQ(record.ErrMsg, "Indexing beyond list in vectorWatQuant!");
    EXPECT_EQ(found.findRecord(Record::Logs, 4), &signal);
    record.ErrFlag = 0;
    EXPECT_EQ(found.findRecord(Record::Logs, 5), nullptr);
    EXPECT_STREQ(record.ErrMsg, "Indexing beyond list in vectorLogs!");
    EXPECT_EQ(record.ErrFlag, 1);
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
        found.emplace(&record, nullptr, nullptr);
        step.lookups = &*found;
    }

    std::array<float, 3> values{1.0F, 2.0F, 3.0F};
    SeriesEntry entry{8, values.data()};
    ComponentRow row{8.0F, 32.0F, 0.0F, 0.0F, 0.0F};
    std::optional<Lookups> found;
    Step step;
    Notes notes;
};

TEST_F(Binding, StepBefore) {
    record.CurStep = 0;
    Binder first(step, notes);
    EXPECT_EQ(*first.thisStep().before(first.before(Series::WatQuant)), 1.0F);
    record.CurStep = 2;
    Binder later(step, notes);
    EXPECT_EQ(*later.thisStep().before(later.before(Series::WatQuant)), 2.0F);
    record.CurStep = 3;
    Binder beyond(step, notes);
    EXPECT_EQ(*beyond.thisStep().before(beyond.before(Series::WatQuant)), 3.0F);
    EXPECT_FALSE(beyond.failed());
    beyond.after(Series::WatQuant);
    EXPECT_TRUE(beyond.failed());
    EXPECT_STREQ(record.ErrMsg, "Step 3 is outside the series of component with id=8!");
}

TEST_F(Binding, TheFirstFailureStands) {
    Binder binder(step, notes);
    EXPECT_EQ(binder.own(Series::InsDmd), nullptr);
    const std::string first = record.ErrMsg;
    EXPECT_EQ(first, "Series of type InsDmd of component with id=8 not found!");
    EXPECT_EQ(binder.before(Series::WatQuant), nullptr);
    EXPECT_EQ(binder.find(8), nullptr);
    EXPECT_EQ(binder.specifications<12>(), std::tuple(0.0F));
    EXPECT_EQ(record.ErrMsg, first);
}

TEST_F(Binding, NotesWhatIsReadAndWritten) {
    notes.task = 7;
    Binder binder(step, notes);
    binder.before(Series::WatQuant);
    binder.after(Series::WatQuant);
    ASSERT_EQ(notes.accesses.size(), 2U);
    EXPECT_EQ(notes.accesses[0].memory, values.data());
    EXPECT_FALSE(notes.accesses[0].writes);
    EXPECT_TRUE(notes.accesses[1].writes);
    EXPECT_EQ(notes.accesses[1].task, 7U);
}

// One array for all forms of a component, and another for the next component.
TEST_F(Binding, WhatIsHandedOver) {
    const BlockArray filled = Binder(step, notes).handedOver();
    Binder reader(step, notes);
    const BlockArray read = reader.handedOver();
    *reader.thisStep().part(filled) = 4.0F;
    EXPECT_EQ(*reader.thisStep().part(read), 4.0F);
    notes.handedOver.reset();
    EXPECT_NE(Binder(step, notes).handedOver().index, filled.index);
    EXPECT_EQ(notes.arrays.size(), 2U);
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
