// What spreadsheets write: encodings, delimiters, decimal marks, dates.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "csv_dialect.h"
#include "csv_file.h"
#include "date_reading.h"
#include "model_reader.h"
#include "model_text.h"
#include "number_format.h"
#include "series.h"
#include "text_encoding.h"

namespace kesto {
namespace {

using namespace std::string_literals;

std::string said(const Diagnostics& diagnostics) {
    std::ostringstream out;
    diagnostics.print(out);
    return out.str();
}

TEST(Numbers, TellTheirDecimalMark) {
    using enum NumberForm;
    const std::vector<std::pair<std::string_view, NumberForm>> cells{
        {"12", whole},          {"-12e3", whole},         {"1 234", whole},
        {"1'234'567", whole},   {"1\u202F234", whole},    {"1.5", withPoint},
        {".5", withPoint},      {"0.125", withPoint},     {"1234.567", withPoint},
        {"1.234e3", withPoint}, {"1,234.5", withPoint},   {"1,234,567", withPoint},
        {"1 234.5", withPoint}, {"1,5", withComma},       {"0,125", withComma},
        {"1.234,5", withComma}, {"1.234.567", withComma}, {"1\u00A0234,567", withComma},
        {"-1.234", either},     {"123,456", either}};
    for (const auto& [cell, form] : cells) {
        EXPECT_EQ(formOf(cell), form) << cell;
    }
    for (const char* cell : {"", "x", "1.2.3", "1,23,456", "12,34.5", "1.234,567.8", "1 23", "1234,567,890",
                             "0,123,456", "31.12.2012", "1e", "nan", "inf", "0x10", "1-2", ".", "1..2", "3 m3"}) {
        EXPECT_EQ(formOf(cell), noNumber) << cell;
    }
}

TEST(Numbers, AreReadWithTheMarkOfTheirFile) {
    using enum DecimalMark;
    EXPECT_EQ(readNumber("1,234.5", point), 1234.5);
    EXPECT_EQ(readNumber("1.234,5", comma), 1234.5);
    EXPECT_EQ(readNumber("-1 234,5", comma), -1234.5);
    EXPECT_EQ(readNumber("+1,5e-3", comma), 0.0015);
    EXPECT_EQ(readNumber("+-8", point), std::nullopt);
    EXPECT_EQ(readFloat("+-8", point), std::nullopt);
    EXPECT_EQ(readNumber("1.234", point), 1.234);
    EXPECT_EQ(readNumber("1.234", comma), 1234);
    EXPECT_EQ(readNumber("1.234", unknown), std::nullopt);
    EXPECT_EQ(readNumber("1234", unknown), 1234);
    EXPECT_EQ(readNumber("1,5", point), std::nullopt);
    EXPECT_EQ(readNumber("1.5", comma), std::nullopt);
    EXPECT_EQ(readNumber("nan", point), std::nullopt);
    // Written and read again, single precision keeps its bits.
    EXPECT_EQ(readFloat("0,1", comma), 0.1F);
    EXPECT_EQ(readFloat("1e39", point), std::nullopt);
    // What stands in a model file is no cell.
    EXPECT_EQ(parseNumber("1,234"), std::nullopt);
    EXPECT_TRUE(hasThousands("1.234", comma));
    EXPECT_TRUE(hasThousands("1 234,5", comma));
    EXPECT_FALSE(hasThousands("1234,5", comma));
    EXPECT_FALSE(hasThousands("1.234", point));
    EXPECT_TRUE(fitsSinglePrecision(3.4e38));
    EXPECT_FALSE(fitsSinglePrecision(-3.5e38));
}

DateColumn datesOf(const std::vector<std::string>& cells) {
    return readDates(cells.size(), [&](std::size_t row) { return std::string_view(cells[row]); });
}

TEST(Dates, AreReadInOneOrder) {
    const Day day = dayOf({2012, 4, 3});
    for (const auto& [cells, form] : std::vector<std::pair<std::vector<std::string>, DateForm>>{
             {{"2012-04-03", "2012-04-13"}, DateForm::yearFirst},
             {{"2012/4/3 00:00", "2012/4/13 00:00"}, DateForm::yearFirst},
             {{"20120403", "20120413"}, DateForm::yearFirst},
             {{"3.4.2012", "13.4.2012"}, DateForm::dayMonthYear},
             {{"03.04.2012", "04.04.2012"}, DateForm::dayMonthYear},
             {{"03/04/2012", "13/04/2012"}, DateForm::dayMonthYear},
             {{"03-04-2012 12:30", "13-04-2012 12:30"}, DateForm::dayMonthYear},
             {{"4/3/2012", "4/13/2012"}, DateForm::monthDayYear},
             {{"41002", "41012,5"}, DateForm::countedDays}}) {
        const DateColumn column = datesOf(cells);
        EXPECT_FALSE(column.doubt) << cells[0];
        EXPECT_EQ(column.form, form) << cells[0];
        ASSERT_EQ(column.days.size(), 2U);
        EXPECT_EQ(column.days[0], day) << cells[0];
    }
    EXPECT_EQ(datesOf({"39540"}).days[0], dayOf({2012, 4, 3}) - kFrom1904);
}

TEST(Dates, RefuseWhatCanBeTwoDays) {
    const DateColumn open = datesOf({"", "03/04/2012", "04/04/2012"});
    ASSERT_TRUE(open.doubt);
    EXPECT_EQ(open.doubt->row, 1U);
    EXPECT_EQ(
        open.doubt->why,
        "\"03/04/2012\" is 3 April or 4 March: no date of this column has a day above 12 to tell; expected dates such "
        "as 2012-04-03");
    const DateColumn both = datesOf({"13/04/2012", "04/14/2012"});
    ASSERT_TRUE(both.doubt);
    EXPECT_EQ(both.doubt->row, 1U);
    const DateColumn shortYears = datesOf({"1/31/12"});
    ASSERT_TRUE(shortYears.doubt);
    EXPECT_EQ(shortYears.doubt->why, "the year of \"1/31/12\" has two digits; expected four, best as in 2012-01-31");
}

TEST(Dates, LeaveOutWhatIsNone) {
    const DateColumn column =
        datesOf({"2012-02-30", "", "Total", "41002", "31.4.2012", "12/2012", "5", "1-2-3-4", "2012-04-03"});
    ASSERT_FALSE(column.doubt);
    for (std::size_t row = 0; row + 1 < column.days.size(); ++row) {
        EXPECT_FALSE(column.days[row]) << row;
    }
    EXPECT_EQ(column.days.back(), dayOf({2012, 4, 3}));
}

TEST(Dates, AreListedAsRanges) {
    const Day day = dayOf({2012, 2, 27});
    EXPECT_EQ(rangesOf({day, day + 1, day + 2, day + 4, day + 6, day + 7}),
              "2012-02-27 to 2012-02-29, 2012-03-02 and 2012-03-04 to 2012-03-05");
    EXPECT_EQ(rangesOf({}), "");
    std::vector<Day> many;
    for (int i = 0; i < 24; i += 2) {
        many.push_back(day + i);
    }
    EXPECT_TRUE(rangesOf(many).ends_with(", 2012-03-16 and 2 more gaps"));
}

TEST(Encodings, BecomeUtf8) {
    const std::string text = "é, 𝄞\n";
    EXPECT_EQ(encodingOf(text), Encoding::utf8);
    EXPECT_EQ(toUtf8("\xEF\xBB\xBF" + text, Encoding::utf8), text);
    const std::string little = "\xFF\xFE\xE9\0,\0 \0\x34\xD8\x1E\xDD\n\0"s,
                      big = "\xFE\xFF\0\xE9\0,\0 \xD8\x34\xDD\x1E\0\n"s;
    EXPECT_EQ(encodingOf(little), Encoding::utf16LittleEndian);
    EXPECT_EQ(toUtf8(little, Encoding::utf16LittleEndian), text);
    EXPECT_EQ(encodingOf(big), Encoding::utf16BigEndian);
    EXPECT_EQ(toUtf8(big, Encoding::utf16BigEndian), text);
    EXPECT_EQ(toUtf8("\xFF\xFE\x34\xD8x\0\n"s, Encoding::utf16LittleEndian), "\uFFFDx\uFFFD");
    EXPECT_EQ(encodingOf("aaaaaaaaaaaaaaaa\xE9"), Encoding::windows1252);
    EXPECT_EQ(toUtf8("\xE9\x80\x81", Encoding::windows1252), "é€\uFFFD");
    for (const char* wrong :
         {"\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xC3"}) {
        EXPECT_EQ(encodingOf(wrong), Encoding::windows1252);
    }
    EXPECT_EQ(toUtf8("a\r1\r", Encoding::utf8), "a\n1\n");
}

TEST(Encodings, TellWhatIsNoTable) {
    EXPECT_EQ(whyNoTable("a,b\n"), std::nullopt);
    EXPECT_EQ(whyNoTable("\xFF\xFE"
                         "a\0"s),
              std::nullopt);
    EXPECT_TRUE(whyNoTable("PK\x03\x04...")->starts_with("is a spreadsheet"));
    EXPECT_TRUE(whyNoTable("\x89PNG\r\n\x1A\n")->starts_with("is a PNG picture"));
    EXPECT_TRUE(whyNoTable("<!DOCTYPE HTML><html>")->starts_with("is an HTML page"));
    EXPECT_TRUE(whyNoTable("a\0,\0"s)->starts_with("holds zero bytes"));
}

TEST(Dialects, AreToldFromTheFirstLines) {
    EXPECT_EQ(csvDialectOf("a,b\n1,2\n").delimiter, ',');
    EXPECT_EQ(csvDialectOf("a;b\n1,5;2,5\n").delimiter, ';');
    EXPECT_EQ(csvDialectOf("a\tb\n1,5\t2;5\n").delimiter, '\t');
    // A comma or a semicolon in a name or a list parts nothing.
    EXPECT_EQ(csvDialectOf("date;rain, mm\n2012-01-01;1,5\n2012-01-02;0\n").delimiter, ';');
    EXPECT_EQ(csvDialectOf("splitter,beta,members; all\ns,50,a;b;c\nt,50,a\n").delimiter, ',');
    EXPECT_EQ(csvDialectOf("# a;b;c\n\"x;y\",b\n1,2\n").delimiter, ',');
    EXPECT_EQ(csvDialectOf("rain\n1\n").delimiter, ',');
    EXPECT_EQ(csvDialectOf("rain\n1,5\n2,5\n").delimiter, ';');
    EXPECT_EQ(csvDialectOf("sep=;\r\na,b\n").delimiter, ';');
    EXPECT_EQ(csvDialectOf("sep=;\r\na,b\n").begin, 7U);
    EXPECT_EQ(csvDialectOf("sep=;").begin, 5U);
    EXPECT_EQ(csvDialectOf("").delimiter, ',');
}

TEST(Csv, ReadsWhatSpreadsheetsWrite) {
    Diagnostics diagnostics;
    const auto csv = CsvFile::parse("sep=;\r\nTag;\"Höhe; mm\"; Q\r\n1.1.2012;1.234,5;\r\n2.1.2012; 12 ;x\r\n", "t.csv",
                                    diagnostics);
    ASSERT_TRUE(csv) << said(diagnostics);
    EXPECT_EQ(csv->columns(), (std::vector<std::string>{"Tag", "Höhe; mm", "Q"}));
    EXPECT_EQ(csv->decimalMark(), DecimalMark::comma);
    EXPECT_EQ(csv->cell(0, 1), "1.234,5");
    EXPECT_EQ(toString(csv->placeOf(1, 1)), "t.csv:4:11");
    csv->noteUnderstood({"more"}, diagnostics);
    EXPECT_NE(
        said(diagnostics).find("read with semicolons between cells, decimal commas (\"1.234,5\" in line 3), more\n"),
        std::string::npos)
        << said(diagnostics);
}

TEST(Csv, CountsCharactersRatherThanBytes) {
    Diagnostics diagnostics;
    const auto csv = CsvFile::parse("a,b\néé,1\n", "t.csv", diagnostics);
    ASSERT_TRUE(csv);
    EXPECT_EQ(toString(csv->placeOf(0, 1)), "t.csv:2:4");
}

TEST(Csv, KnowsNoDecimalMarkWhereNothingTells) {
    Diagnostics diagnostics;
    EXPECT_EQ(CsvFile::parse("a;b\n1;1.234\n", "t.csv", diagnostics)->decimalMark(), DecimalMark::unknown);
    EXPECT_EQ(CsvFile::parse("a;b\n0.5;1.234\n", "t.csv", diagnostics)->decimalMark(), DecimalMark::point);
    // Between commas a number has none of its own, unless it is quoted.
    EXPECT_EQ(CsvFile::parse("a,b\n1,1.234\n", "t.csv", diagnostics)->decimalMark(), DecimalMark::point);
    EXPECT_EQ(CsvFile::parse("a,b\n\"x, y\",1.234\n", "t.csv", diagnostics)->decimalMark(), DecimalMark::point);
    EXPECT_EQ(CsvFile::parse("a,b\n1,\"1,234\"\n", "t.csv", diagnostics)->decimalMark(), DecimalMark::unknown);
    EXPECT_EQ(CsvFile::parse("a,b\n1.5,\"1,234\"\n", "t.csv", diagnostics)->decimalMark(), DecimalMark::point);
    EXPECT_EQ(CsvFile::parse("a,b\n1,\"1,5\"\n", "t.csv", diagnostics)->decimalMark(), DecimalMark::comma);
    EXPECT_EQ(said(diagnostics), "");
}

TEST(Csv, TellsOfDecimalCommasBetweenCommas) {
    Diagnostics diagnostics;
    std::string text = "date,rain\n";
    for (int i = 0; i < 15; ++i) {
        text += "2012-01-01,1,5\n";
    }
    const auto csv = CsvFile::parse(text, "t.csv", diagnostics);
    ASSERT_TRUE(csv);
    EXPECT_FALSE(csv->isWhole());
    EXPECT_EQ(diagnostics.count(Severity::error), 11U);
    const std::string expected =
        "t.csv: error: 15 of 15 rows have other than 2 cells; if they hold decimal commas, part the cells by "
        "semicolons\n"
        "t.csv:2: error: found 3 cells, expected 2 as in the first line\n";
    EXPECT_TRUE(said(diagnostics).starts_with(expected)) << said(diagnostics);
}

// Rain of three days out of a table beside the model; nothing when it cannot be read.
std::shared_ptr<const Floats> rainOf(const std::string& table, const std::string& column, Diagnostics& diagnostics,
                                     const std::string& more = "") {
    const std::string path = test::writeModel(
        "kesto_model = 1\n[simulation]\nstart = 2012-12-30\nend = 2013-01-01\n"
        "[series]\nfile = \"table.csv\"\ntime = \"date\"\nrainfall = " +
        column + "\n[groups.g]\n" + more);
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::ofstream(folder / "table.csv", std::ios::binary) << table;
    const auto model = readModel(path, diagnostics);
    SeriesValues series(*model, diagnostics);
    return series.of(model->groups[0].series[SeriesKind::rainfall]);
}

TEST(Series, AreTheSameInEveryDialect) {
    const Floats expected{0.1F, 1234.5F, 0};
    for (const char* table : {"date,rain (mm)\n2012-12-30,0.1\n2012-12-31,1234.5\n2013-01-01,0\n",
                              "rain (mm);date\n0;1.1.2013\n1.234,5;31.12.2012\n0,1;30.12.2012\n",
                              "date\train (mm)\n41273\t0,1\n41274\t1 234,5\n41275\t0\n",
                              "\xEF\xBB\xBF"
                              "date,rain (mm)\r\n12/30/2012,.1\r\n12/31/2012,\"1,234.5\"\r\n01/01/2013,0\r\nTotal,\r\n",
                              "date,rain (mm)\n20130102,9\n20130101,0\n20121231,1234.5\n20121230,0.1\n20121229,\n"}) {
        Diagnostics diagnostics;
        const auto values = rainOf(table, "\"rain (mm)\"", diagnostics);
        ASSERT_TRUE(values) << table << said(diagnostics);
        EXPECT_EQ(*values, expected) << table;
    }
}

TEST(Series, TellAllHolesAtOnce) {
    Diagnostics diagnostics;
    EXPECT_FALSE(rainOf("date,rain\n2012-12-31,1\nTotal,1\n", "\"rain\"", diagnostics));
    EXPECT_NE(said(diagnostics)
                  .find("table.csv:2:1: error: no row for 2012-12-30 and 2013-01-01 (2 of the 3 days of the run); "
                        "expected one row for each day; its rows are for 2012-12-31 to 2012-12-31; a row has no "
                        "date, the first \"Total\" in line 3\n"),
              std::string::npos)
        << said(diagnostics);
}

TEST(Series, RefuseDaysInDisorder) {
    for (const auto& [table, text] : std::vector<std::pair<const char*, const char*>>{
             {"date,rain\n2012-12-30,1\n2013-01-01,1\n2012-12-31,1\n",
              ":4:1: error: \"2012-12-31\" comes after 2013-01-01; expected the days in order, oldest or newest "
              "first\n"},
             {"date,rain\n2012-12-30,1\n2012-12-31,1\n2012-12-31,1\n2012-12-31,1\n2013-01-01,1\n",
              ":4:1: error: a second row for 2012-12-31, which line 3 has; expected one row for each day; 1 more row "
              "like this\n"},
             {"date,rain\nx,1\n",
              ":2:1: error: no row for 2012-12-30 to 2013-01-01 (3 of the 3 days of the run); expected one "
              "row for each day, with dates such as 2012-01-31\n"},
             {"date,rain\n",
              ":1: error: no row for 2012-12-30 to 2013-01-01 (3 of the 3 days of the run); expected one row "
              "for each day, with dates such as 2012-01-31\n"}}) {
        Diagnostics diagnostics;
        EXPECT_FALSE(rainOf(table, "\"rain\"", diagnostics));
        EXPECT_NE(said(diagnostics).find(text), std::string::npos) << said(diagnostics);
    }
}

TEST(Series, AreFiniteInTheirUnit) {
    const std::string table = "date,rain\n2012-12-30,1\n2012-12-31,1e37\n2013-01-01,-1e40\n";
    for (const auto& [column, text] : std::vector<std::pair<const char*, const char*>>{
             {"{ column = \"rain\", unit = \"m\" }",
              "column \"rain\" holds a number beyond single precision (3.4e38) on 2012-12-31 to "
              "2013-01-01 (2 of the 3 days of the run); the first cell holds \"1e37\"\n"},
             {"\"rain\"", "on 2013-01-01 (1 of the 3 days of the run); the first cell holds \"-1e40\"\n"},
             {"{ value = 1e36, unit = \"m\" }", "[series] rainfall holds 1e+36"},
             {"\"1e36 m\"",
              "[series] rainfall is the text \"1e36 m\"; expected a number that single precision can hold, at most "
              "3.4e38\n"}}) {
        Diagnostics diagnostics;
        EXPECT_FALSE(rainOf(table, column, diagnostics)) << column;
        EXPECT_NE(said(diagnostics).find(text), std::string::npos) << said(diagnostics);
    }
}

}  // namespace
}  // namespace kesto
