// The small readers: dates, units, CSV, TOML.
#include <gtest/gtest.h>

#include <sstream>

#include "calendar.h"
#include "csv_file.h"
#include "diagnostics.h"
#include "toml_file.h"
#include "units.h"

namespace kesto {
namespace {

std::string said(const Diagnostics& diagnostics) {
    std::ostringstream out;
    diagnostics.print(out);
    return out.str();
}

TEST(Calendar, ReadsDays) {
    EXPECT_EQ(parseDay("1970-01-01"), 0);
    EXPECT_EQ(parseDay("2012-02-29T12:00:00"), dayOf({2012, 2, 29}));
    EXPECT_EQ(toText(*parseDay("2012-02-29")), "2012-02-29");
    for (const char* wrong : {"2013-02-29", "2012-13-01", "2012-1-1", "2012-01-01x", "", "01.01.2012"}) {
        EXPECT_EQ(parseDay(wrong), std::nullopt) << wrong;
    }
    EXPECT_EQ(weekdayOf(dayOf({2024, 1, 1})), 0);  // a Monday
}

TEST(Calendar, ShiftsRunsIntoTheRecordsYears) {
    EXPECT_EQ(shiftToRecord(dayOf({2012, 1, 1}), dayOf({2090, 1, 1})), 0);
    const Day start = dayOf({2050, 3, 1});
    const auto shift = shiftToRecord(start, dayOf({2080, 12, 31}));
    ASSERT_TRUE(shift);
    EXPECT_EQ(dateOf(start + *shift).year, 2022);  // 28 years before
    EXPECT_EQ(weekdayOf(start + *shift), weekdayOf(start));
    const Day past = dayOf({1881, 1, 1});
    EXPECT_EQ(dateOf(past + *shiftToRecord(past, dayOf({1899, 12, 31}))).year % 4, 1);
    // 1900 was no leap year; no eight years in a row without one lie between 1970 and 2038.
    EXPECT_EQ(shiftToRecord(dayOf({1897, 1, 1}), dayOf({1904, 12, 31})), std::nullopt);
}

TEST(Units, Convert) {
    EXPECT_EQ(conversion("m3", "L")->factor, 1000);
    EXPECT_DOUBLE_EQ(conversion("degF", "degC")->factor * 212 + conversion("degF", "degC")->offset, 100);
    EXPECT_FALSE(conversion("m3", "mm"));
    EXPECT_TRUE(conversion("L", "L")->isIdentity());
}

TEST(Csv, ReadsCellsQuotesAndComments) {
    Diagnostics diagnostics;
    const auto csv = CsvFile::parse("\xEF\xBB\xBF# source\r\na, b ,\"c, d\"\r\n\r\n1,\"two \"\"2\"\"\", 3 \r\n,,\n",
                                    "t.csv", diagnostics);
    ASSERT_TRUE(csv) << said(diagnostics);
    EXPECT_EQ(csv->columns(), (std::vector<std::string>{"a", "b", "c, d"}));
    ASSERT_EQ(csv->rows(), 2U);
    EXPECT_EQ(csv->cell(0, 1), "two \"2\"");
    EXPECT_EQ(csv->cell(0, 2), "3");
    EXPECT_EQ(csv->cell(1, 0), "");
    EXPECT_EQ(toString(csv->placeOf(0, 2)), "t.csv:4:16");
    EXPECT_EQ(csv->column("c, d"), 2U);
    EXPECT_FALSE(csv->column("x"));
}

TEST(Csv, NamesLinesThatAreWrong) {
    Diagnostics diagnostics;
    const auto csv = CsvFile::parse("a,b\n1\n1,2\n1,2,3\n\"x,2\n\"x\"y,2\n", "t.csv", diagnostics);
    ASSERT_TRUE(csv);
    EXPECT_FALSE(csv->isWhole());
    EXPECT_EQ(csv->rows(), 1U);
    EXPECT_EQ(said(diagnostics),
              "t.csv:2: error: found 1 cell, expected 2 as in the first line\n"
              "t.csv:4: error: found 3 cells, expected 2 as in the first line\n"
              "t.csv:5:1: error: a quote is not closed\n"
              "t.csv:6:4: error: expected a comma after a quoted cell\n");
}

TEST(Csv, RefusesWhatIsNotAFiniteNumber) {
    EXPECT_EQ(parseFloat("0.1"), 0.1F);
    EXPECT_EQ(parseFloat("+1e3"), 1000.0F);
    for (const char* wrong : {"", "x", "1x", "nan", "inf", "1e99", "0x10", "1 2", "--1"}) {
        EXPECT_EQ(parseFloat(wrong), std::nullopt) << wrong;
    }
}

TEST(Toml, KeepsTheOrderOfTheFile) {
    Diagnostics diagnostics;
    const auto file = readTomlText("z = 1\n[b]\nx = 2.5\n[a]\ny = \"t\"\n", "m.toml", diagnostics);
    ASSERT_TRUE(file);
    ASSERT_EQ(file->fields.size(), 3U);
    EXPECT_EQ(file->fields[0].name.value, "z");
    EXPECT_EQ(file->fields[1].name.value, "b");
    EXPECT_EQ(file->fields[2].name.value, "a");
    EXPECT_EQ(toString(file->fields[2].value.field("y")->place), "m.toml:5:5");
}

TEST(Diagnostics, SuggestsWhatIsNear) {
    EXPECT_EQ(suggestion("rian", {"rain", "train"}), "; did you mean \"rain\"?");
    EXPECT_EQ(suggestion("sewer", {"tank", "roof"}), "");
    EXPECT_EQ(suggestion("x", {}), "");
    EXPECT_EQ(listOf({"a", "b", "c"}), "a, b or c");
}

}  // namespace
}  // namespace kesto
