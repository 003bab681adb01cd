// Units that suit the size of a figure.
#include "shown_unit.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kesto {
namespace {

TEST(ShownUnits, FollowTheSize) {
    EXPECT_EQ(shown(0, "L"), "0 L");
    EXPECT_EQ(shown(0.25, "L"), "0.250 L");
    EXPECT_EQ(shown(-9999.94, "L"), "-9999.9 L");
    EXPECT_EQ(shown(10'000, "L"), "10.0 m3");
    EXPECT_EQ(shown(-2.5e7, "L"), "-25000.0 m3");
    EXPECT_EQ(shown(1.237929439e9, "L"), "1237.9 ML");
    EXPECT_EQ(shown(2.5e11, "L"), "250.0 GL");
    EXPECT_EQ(shown(99'999, "kWh"), "99999.0 kWh");
    EXPECT_EQ(shown(123'456, "kWh"), "123.5 MWh");
    EXPECT_EQ(shown(2.3e8, "kWh"), "230.0 GWh");
    EXPECT_EQ(shown(0.761, "-"), "76.1 %");
    EXPECT_EQ(shown(76, "d"), "76 d");
    EXPECT_EQ(shown(3.456, "EUR/m3"), "3.46 EUR/m3");
    EXPECT_EQ(shown(1e-9, "L"), "1e-09 L");
    EXPECT_EQ(shown(std::nan(""), "L"), "not a number");
    EXPECT_EQ(shownNumber(-0.04, {"m3"}), "0.0");
}

TEST(ShownUnits, LongNamesAreCutInBrief) {
    const std::string name(60, 'x');
    EXPECT_EQ(shownName(name, Detail::full), name);
    EXPECT_LE(shownName(name, Detail::brief).size(), 35U);
    EXPECT_EQ(shownName("washing_machine:wastewater", Detail::brief), "washing_machine:wastewater");
}

}  // namespace
}  // namespace kesto
