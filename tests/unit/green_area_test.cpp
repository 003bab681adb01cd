#include "components/green_area.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

// FAO Irrigation and Drainage Paper 56, example 20: Lyon (45.72 N), July, 26.6 and 14.8 degrees, 5.0 mm/d.
TEST(GreenArea, HargreavesAtLyon) {
    AUEglobals record{};
    record.Latitude = 45.72F;
    DayTable table{};
    insolation(&record, table);
    EXPECT_NEAR(static_cast<double>(hargreaves(table[195], 14.8F, 26.6F)), 5.0, 0.02 * 5.0);
}

TEST(GreenArea, NoRangeNoEvaporation) {
    EXPECT_BITS(0.0F, hargreaves(40000.0F, 20.0F, 20.0F));
}

TEST(GreenArea, LevelStaysWithinItsBounds) {
    const Balance dry = balance(0.0F, 1.0F, 0.0F, 1.0F, 4.0F, 0.0F, 30.0F);
    EXPECT_BITS(0.0F, dry.level);
    EXPECT_BITS(3.0F, dry.shortfall);
    EXPECT_BITS(0.0F, dry.spill);
    const Balance full = balance(20.0F, 25.0F, 0.0F, 1.0F, 5.0F, 0.0F, 30.0F);
    EXPECT_BITS(30.0F, full.level);
    EXPECT_BITS(10.0F, full.spill);
    EXPECT_BITS(-0.0F, full.shortfall);
}

}  // namespace
