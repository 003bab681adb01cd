// What is shown of the text of others, and how far a run is.
#include "display.h"

#include <gtest/gtest.h>

#include <limits>

#include "diagnostics.h"
#include "progress_bar.h"
#include "toml_depth.h"

namespace {

using namespace kesto;

TEST(Display, ControlCharactersAreFoundAndShown) {
    EXPECT_FALSE(controlCharacterIn("Zisterne für 3 m³ – \"€\" 水"));
    EXPECT_EQ(controlCharacterIn("a\x1b[31m"), "U+001B");
    EXPECT_EQ(controlCharacterIn("a\tb"), "U+0009");
    EXPECT_EQ(controlCharacterIn("a\x7f"), "U+007F");
    EXPECT_EQ(controlCharacterIn("a\xc2\x9b"), "U+009B");
    EXPECT_FALSE(controlCharacterIn("\xc2\xa0"));  // a blank
    EXPECT_FALSE(controlCharacterIn("\xc2"));
    EXPECT_EQ(printable("a\x1b[31m\nb\xc2\x9b"), "a\\u001B[31m\\u000Ab\\u009B");
    EXPECT_EQ(printableLines("a\nb\r\n"), "a\nb\\u000D\n");
}

TEST(Display, ShortenedTextsKeepBothEndsAndWholeCharacters) {
    EXPECT_EQ(shortened("short", 5), "short");
    EXPECT_EQ(shortened("0123456789abcdefghij", 9), "012345…hij");
    EXPECT_EQ(shortened("ääääääääääää", 9), "äää…ä");
    EXPECT_EQ(shortened(std::string(100, '\x80'), 9), "…");
}

TEST(Display, ThousandsArePartedByCommas) {
    EXPECT_EQ(withThousands(0), "0");
    EXPECT_EQ(withThousands(999), "999");
    EXPECT_EQ(withThousands(11983), "11,983");
    EXPECT_EQ(withThousands(1002003), "1,002,003");
}

TEST(Display, ProgressFitsTheTerminal) {
    constexpr double kUnknown = std::numeric_limits<double>::infinity();
    EXPECT_EQ(progressLine(80, 0.5, 3), "[####################                    ]  50 %, 3 s left");
    EXPECT_EQ(progressLine(80, 0, kUnknown), "[                                        ]   0 %");
    EXPECT_EQ(progressLine(25, 0.5, 3), "[###   ]  50 %, 3 s left");
    EXPECT_EQ(progressLine(20, 0.5, 3), " 50 %, 3 s left");
    EXPECT_EQ(progressLine(6, 0.5, 3), " 50 %");
    for (std::size_t columns = 1; columns < 100; ++columns) {
        EXPECT_LT(progressLine(columns, 1, 1234567).size(), columns);
    }
}

std::string nested(int dots) {
    std::string text = "a";
    for (int i = 0; i < dots; ++i)
        text += ".a";
    return text + " = 1\n";
}

TEST(TomlDepth, CountsDotsAndBrackets) {
    EXPECT_FALSE(tooDeepAt(nested(kDeepestNesting)));
    const auto deep = tooDeepAt("x = 1\n" + nested(kDeepestNesting + 1));
    ASSERT_TRUE(deep);
    EXPECT_EQ(deep->line, 2);
    EXPECT_EQ(deep->column, 2 * (kDeepestNesting + 1));
    const auto most = static_cast<std::size_t>(kDeepestNesting - 2);  // beside a brace and a dot
    EXPECT_FALSE(tooDeepAt("a = {a.a = " + std::string(most, '[')));
    EXPECT_TRUE(tooDeepAt("a = {a.a = " + std::string(most + 1, '[')));
}

TEST(TomlDepth, PassesOverWhatDoesNotNest) {
    const std::string dots(100, '.'), brackets(100, '[');
    const std::string quoted = dots + "'" + brackets, escaped = dots + "\\\"" + brackets;
    for (const std::string& text : {"# " + quoted, "a = '" + dots + "'", "a = \"" + escaped + "\"",
                                    "a = '''\n" + quoted + "'''", "a = \"\"\"\n" + escaped + "\"\"\""}) {
        EXPECT_FALSE(tooDeepAt(text)) << text;
        EXPECT_TRUE(tooDeepAt(text + "\n" + dots)) << text;
    }
    for (const char quote : {'"', '\''}) {
        const std::string three(3, quote);
        for (const std::size_t more : {0U, 1U, 2U}) {
            EXPECT_TRUE(tooDeepAt("a = [" + three + "b" + three + std::string(more, quote) + ", {" + dots)) << more;
        }
        EXPECT_TRUE(tooDeepAt("a = [" + three + three + ", {" + dots));
    }
    std::string values = "a = [";
    for (int i = 0; i < 100; ++i)
        values += i % 2 == 0 ? "1.5, " : "[1.5], {b.c = 1.5},\n";
    EXPECT_FALSE(tooDeepAt(values + "]\n" + nested(kDeepestNesting)));
}

TEST(Diagnostics, SuggestsForTheFirstTwentyNames) {
    Diagnostics diagnostics;
    const auto names = [] { return std::vector<std::string_view>{"tank"}; };
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(diagnostics.suggest("tnak", names), "; did you mean \"tank\"?");
    }
    EXPECT_EQ(diagnostics.suggest("tnak", names), "");
}

}  // namespace
