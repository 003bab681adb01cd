// The engine's radiation against the tables of FAO Irrigation and Drainage Paper 56 (Allen et al. 1998).
#include "solarrad.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "bits_equal.h"
#include "calendar.h"

namespace {

DayTable tableAt(float latitude) {
    AUEglobals record{};
    record.Latitude = latitude;
    DayTable table{};
    insolation(&record, table);
    return table;
}

// Table 2.6, extraterrestrial radiation on the 15th of each month [MJ/m2/d]. The declination of the engine is about two
// days late, so the largest difference is given with each latitude.
struct Published {
    float latitude;
    std::array<double, 12> Ra;
    double within;
};

const std::array<Published, 5> kTable{{
    {0.0F, {36.2, 37.5, 37.9, 36.8, 34.8, 33.4, 33.9, 35.7, 37.2, 37.4, 36.3, 35.6}, 0.24},
    {20.0F, {26.8, 30.6, 34.7, 37.9, 39.3, 39.5, 39.3, 38.3, 35.8, 31.8, 27.7, 25.6}, 0.29},
    {40.0F, {15.0, 20.4, 27.2, 34.7, 39.7, 41.9, 40.8, 36.7, 30.0, 22.5, 16.3, 13.6}, 0.49},
    {60.0F, {3.3, 8.3, 16.6, 27.5, 36.5, 41.2, 39.2, 31.3, 20.6, 10.9, 4.4, 2.2}, 0.75},
    {-16.0F, {41.1, 39.9, 37.2, 32.8, 28.5, 26.2, 27.0, 30.6, 35.2, 38.7, 40.6, 41.2}, 0.36},
}};
constexpr std::array<std::size_t, 12> kFifteenth{14, 45, 73, 104, 134, 165, 195, 226, 257, 287, 318, 348};

TEST(Solar, ExtraterrestrialRadiationOfThePublication) {
    for (const Published& row : kTable) {
        const DayTable table = tableAt(row.latitude);
        for (std::size_t month = 0; month < 12; ++month)
            EXPECT_NEAR(static_cast<double>(table[kFifteenth[month]]) / 1000.0, row.Ra[month], row.within)
                << "latitude " << row.latitude << ", month " << month + 1;
    }
}

TEST(Solar, LastEntryOfALeapYearEqualsTheFirst) {
    // Day 365 is a whole turn of the formula's year of 365 days.
    const DayTable table = tableAt(47.6F);
    EXPECT_BITS(table[0], table[365]);
    EXPECT_NE(table[0], table[364]);
}

TEST(Solar, PolarDayAndNightAreNoNumbers) {
    const DayTable table = tableAt(80.0F);
    EXPECT_TRUE(std::isnan(table[0]));
    EXPECT_TRUE(std::isnan(table[180]));
    EXPECT_FALSE(std::isnan(table[80]));
}

TEST(Solar, DayOfTheStep) {
    DayTable table{};
    for (std::size_t j = 0; j < table.size(); ++j)
        table[j] = static_cast<float>(j) + 1.0F;
    AUEglobals record{};
    EXPECT_EQ(insolationofthisstep(table, calendarOfStep(&record)->tm_yday), 1.0F);
    record.CurStep = 364;
    EXPECT_EQ(insolationofthisstep(table, calendarOfStep(&record)->tm_yday), 365.0F);
    record.CurStep = 365;
    EXPECT_EQ(insolationofthisstep(table, calendarOfStep(&record)->tm_yday), 1.0F);
    record.CurStep = 2 * 365 + 365;  // 31 December 1972
    EXPECT_EQ(insolationofthisstep(table, calendarOfStep(&record)->tm_yday), 366.0F);
    record.StartTime = 2147483647;  // 19 January 2038
    record.CurStep = 100000;        // 273 years on: seconds beyond 32 bits
    EXPECT_EQ(insolationofthisstep(table, calendarOfStep(&record)->tm_yday), 309.0F);
    EXPECT_EQ(record.ErrFlag, 0);
}

TEST(Solar, FilledOnFirstUseOnly) {
    AUEglobals record{};
    record.Latitude = 45.0F;
    DayTable table{};
    table[0] = 5.0F;
    fillOnFirstUse(&record, table);
    EXPECT_EQ(table[1], 0.0F);
    table[0] = 0.0F;
    fillOnFirstUse(&record, table);
    EXPECT_GT(table[1], 1000.0F);
}

// Bristow and Campbell (1984) in closed form: with a range of 10 degrees for thirty days B = 0.036 exp(-1.54).
TEST(Solar, ShortWaveRadiationInClosedForm) {
    DayTable table{};
    table[0] = 20000.0F;
    float got = 0.0F;
    for (int day = 0; day < 30; ++day)
        got = directbeamsolar(table[0], 4.0F, 14.0F);
    const double B = 0.036 * std::exp(-0.154 * 10.0);
    const double expected = 0.7 * 20000.0 * (1.0 - std::exp(-B * std::pow(10.0, 2.4)));
    EXPECT_NEAR(static_cast<double>(got), expected, 2e-6 * expected);
}

TEST(Solar, NoRangeNoShortWaveRadiation) {
    DayTable table{};
    table[0] = 20000.0F;
    EXPECT_EQ(directbeamsolar(table[0], 14.0F, 14.0F), 0.0F);
}

// Equation 39 with a clear sky, Rs = 0.75 Ra, and no humidity: 0.17 sigma T^4, sigma = 4.9e-6 kJ/m2/d/K4.
TEST(Solar, LongWaveRadiationUnderAClearSky) {
    DayTable table{};
    table[0] = 20000.0F;
    const double expected = 0.17 * 4.9e-6 * std::pow(288.0, 4.0);
    EXPECT_NEAR(static_cast<double>(netlongwave(table[0], 15000.0F, 10.0F, 20.0F)), expected, 1e-6 * expected);
}

}  // namespace
