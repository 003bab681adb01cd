// Codes, severities and what a model accepts.
#include "diagnostics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace kesto {
namespace {

Place at(const char* file, int line) {
    return {std::make_shared<const std::string>(file), line, 1};
}

std::string printed(const Diagnostics& diagnostics, bool errorsOnly = false, std::size_t first = 0) {
    std::ostringstream out;
    diagnostics.print(out, errorsOnly, first);
    return out.str();
}

TEST(Diagnostics, CodesAreShortAndUnique) {
    std::set<std::string_view> names;
    const auto add = [&](std::string_view name, std::string_view meaning) {
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_TRUE(std::all_of(name.begin(), name.end(), [](char c) { return c == '-' || (c >= 'a' && c <= 'z'); }))
            << name;
        EXPECT_LE(name.size(), 24U) << name;
        EXPECT_FALSE(meaning.empty()) << name;
    };
    for (const WarningCode& code : kWarningCodes)
        add(code.name, code.meaning);
    for (const ErrorCode& code : kErrorCodes)
        add(code.name, code.meaning);
}

TEST(Diagnostics, PrintsInOrderOfTheFileWithTheCodesThatCanBeAccepted) {
    Diagnostics all;
    all.warning("no-input", at("a", 9), "nothing sends to it", "sewer");
    all.error("wrong-value", at("a", 2), "size is -1");
    all.warning("part-year", at("a", 3), "its first year is short");
    EXPECT_EQ(printed(all),
              "a:2:1: error: size is -1\na:3:1: note: its first year is short\n"
              "a:9:1: warning: nothing sends to it [no-input]\n");
    EXPECT_EQ(printed(all, true), "a:2:1: error: size is -1\n");
    EXPECT_EQ(printed(all, false, 2), "a:3:1: note: its first year is short\n");
    EXPECT_EQ(all.count(Severity::warning), 1U);
    EXPECT_EQ(all.count(Severity::note), 1U);
}

TEST(Diagnostics, AcceptsByCodeAndComponent) {
    Diagnostics all;
    all.warning("no-input", at("a", 1), "one", "sewer");
    all.warning("no-input", at("a", 2), "two", "river");
    all.warning("frost", at("a", 3), "three", "soil");
    all.error("wrong-value", at("a", 4), "four", "sewer");
    all.accept("no-input", "sewer");
    all.accept("frost", "");
    all.accept("wrong-value", "");
    EXPECT_TRUE(all.isAccepted(all.all()[0]));
    EXPECT_FALSE(all.isAccepted(all.all()[1]));
    EXPECT_TRUE(all.isAccepted(all.all()[2]));
    EXPECT_FALSE(all.isAccepted(all.all()[3])) << "errors are never accepted";
    EXPECT_EQ(printed(all).substr(0, 40), "a:1:1: warning: one [no-input, accepted]");
}

}  // namespace
}  // namespace kesto
