// What a sweep is made of: values of --vary, designs, what is said of many members, processes and the journal.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <random>
#include <stdexcept>

#include "design.h"
#include "findings.h"
#include "journal.h"
#include "member_result.h"
#include "process_pool.h"
#include "varied.h"

namespace kesto {
namespace {

using Texts = std::vector<std::string>;

std::string temporaryPath() {
    const std::string name = "kesto-sweep-" + std::to_string(std::random_device()());
    return (std::filesystem::temp_directory_path() / name).string();
}

TEST(Varied, Lists) {
    EXPECT_EQ(variedValues("1"), Texts{"1"});
    EXPECT_EQ(variedValues("0.5 m3, 1 m3,2 m3"), (Texts{"0.5 m3", "1 m3", "2 m3"}));
    EXPECT_EQ(variedValues("[1, 2],[3, 4]"), (Texts{"[1, 2]", "[3, 4]"}));
    EXPECT_EQ(variedValues("\"a,b\",c"), (Texts{"\"a,b\"", "c"}));
    EXPECT_EQ(variedValues("2012-01-01,2013-01-01"), (Texts{"2012-01-01", "2013-01-01"}));
    EXPECT_THROW(variedValues("1,,2"), std::runtime_error);
    EXPECT_THROW(variedValues(""), std::runtime_error);
}

TEST(Varied, Ranges) {
    EXPECT_EQ(variedValues("500:8000:16").size(), 16U);
    EXPECT_EQ(variedValues("0:1:3"), (Texts{"0", "0.5", "1"}));
    EXPECT_EQ(variedValues("3:1:3"), (Texts{"3", "2", "1"}));
    EXPECT_EQ(variedValues("0.1:0.3:2"), (Texts{"0.1", "0.3"}));
    EXPECT_EQ(variedValues("1 m3:2 m3:2"), (Texts{"1 m3", "2 m3"}));
    EXPECT_EQ(variedValues("1:2 m3:2"), (Texts{"1 m3", "2 m3"}));
    EXPECT_EQ(variedValues("a:b:c"), Texts{"a:b:c"});  // a name of a column, perhaps
    for (const char* wrong : {"1:2:1", "1:2:0", "1:2:-3", "1:2:1.5", "1:2:2 m3", "1 L:2 m3:2"}) {
        EXPECT_THROW(variedValues(wrong), std::runtime_error) << wrong;
    }
}

class Designs : public testing::Test {
  protected:
    Designs() : path_(temporaryPath()) {}
    ~Designs() override { std::filesystem::remove(path_); }

    std::optional<Design> design(const std::string& table, const Texts& vary, bool scenarios = false) {
        if (!table.empty()) std::ofstream(path_) << table;
        ModelDocument document;
        Field scenario{{"dry", {}}, {}}, all{{"scenarios", {}}, {}};
        all.value.fields.push_back(scenario);
        document.file.fields.push_back(all);
        return Design::read({table.empty() ? "" : path_, vary, scenarios}, document, diagnostics_);
    }

    std::string path_;
    Diagnostics diagnostics_;
};

TEST_F(Designs, AreCrossedTheLastFastest) {
    const auto crossed = design("a.x,b.x\n1,2\n,4\n", {"c.x=5,6,7"}, true);
    ASSERT_TRUE(crossed);
    EXPECT_EQ(crossed->members(), 12U);
    EXPECT_EQ(crossed->keys(), (Texts{"scenario", "a.x", "b.x", "c.x"}));
    EXPECT_EQ(crossed->cellsOf(1), (Texts{"", "1", "2", "5"}));
    EXPECT_EQ(crossed->cellsOf(2), (Texts{"", "1", "2", "6"}));
    EXPECT_EQ(crossed->cellsOf(4), (Texts{"", "", "4", "5"}));
    EXPECT_EQ(crossed->cellsOf(12), (Texts{"dry", "", "4", "7"}));
    EXPECT_EQ(crossed->scenarioOf(6), "");
    EXPECT_EQ(crossed->scenarioOf(7), "dry");
    const auto overrides = crossed->overridesOf(12, diagnostics_);
    ASSERT_EQ(overrides.size(), 2U);  // an empty cell leaves the model's value
    EXPECT_EQ(toText(overrides[0].path), "b.x");
    EXPECT_EQ(overrides[0].value.number, 4);
    EXPECT_EQ(toString(overrides[0].value.place), path_ + ":3:2");
    EXPECT_EQ(toString(overrides[0].keyPlace), path_ + ":1");
    EXPECT_EQ(toString(overrides[1].value.place), "--vary c.x=7");
    EXPECT_EQ(toString(overrides[1].keyPlace), "--vary c.x=5,6,7");
}

TEST_F(Designs, KnowWhichMembersAreAlikeButForSomeKeys) {
    const auto crossed = design("a.x,b.x\n1,2\n,4\n3,2\n", {"c.x=5,6"}, true);
    ASSERT_TRUE(crossed);
    using Members = std::vector<std::size_t>;
    EXPECT_EQ(crossed->firstAlike({}, 1, 4), (Members{1, 2, 3, 4}));
    EXPECT_EQ(crossed->firstAlike({{"components", "c", "x"}}, 1, 6), (Members{1, 1, 3, 3, 5, 5}));
    const std::set<KeyPath> two{{"components", "a", "x"}, {"components", "c", "x"}};
    EXPECT_EQ(crossed->firstAlike(two, 1, 12), (Members{1, 1, 3, 3, 1, 1, 7, 7, 9, 9, 7, 7}));
    EXPECT_EQ(crossed->firstAlike(two, 4, 8), (Members{4, 5, 5, 7, 7}));
}

TEST_F(Designs, AreToldApartByTheirChecksum) {
    const std::string one = design("a.x\n1\n2\n", {})->sha256();
    EXPECT_EQ(one, design("a.x\n1\n2\n", {})->sha256());
    for (const char* other : {"a.x\n1\n3\n", "a.y\n1\n2\n", "a.x\n1\n2\n2\n"}) {
        EXPECT_NE(one, design(other, {})->sha256()) << other;
    }
}

TEST_F(Designs, HaveEachKeyOnce) {
    EXPECT_FALSE(design("a.x,a.x\n1,2\n", {}));
    EXPECT_FALSE(design("a.x\n1\n", {"a.x=1"}));
    EXPECT_FALSE(design("", {}));
    EXPECT_EQ(diagnostics_.count(Severity::error), 3U);
}

TEST(FindingsOfMembers, SayEachThingOnce) {
    const Place cell{std::make_shared<const std::string>("m.csv"), 3, 1}, other{cell.file, 7, 1};
    Findings findings("m.csv"), rest("m.csv");
    const auto say = [](Findings& to, std::size_t member, const Place& place, const char* text) {
        Diagnostics diagnostics;
        diagnostics.warning("odd-value", place, text, "tank");
        to.add(member, diagnostics);
    };
    say(findings, 2, cell, "its size is 3 L");
    say(rest, 6, other, "its size is 4 L");
    findings.add(rest.rows());
    Diagnostics said;
    findings.tell(10, said);
    ASSERT_EQ(said.all().size(), 1U);
    EXPECT_EQ(said.all()[0].text, "its size is 3 L; in 2 of 10 members, the first 2");
    EXPECT_EQ(said.all()[0].code, "odd-value");
}

// What ten pieces hand over, "-" where one has died, and what those that died have said.
struct TenPieces {
    std::string given = std::string(10, '-');
    std::vector<std::string> words;

    explicit TenPieces(const std::function<void(std::size_t number)>& work) {
        ProcessPool pool(3, 100, [&](std::size_t number, const std::string& told, std::span<char> room) -> std::size_t {
            work(number);
            room[0] = told.at(0);
            return 1;
        });
        for (std::size_t next = 0; next < 10 || !pool.isIdle();) {
            for (; next < 10 && !pool.isFull(); ++next) {
                pool.start(next, std::string(1, static_cast<char>('a' + next)));
            }
            const auto done = pool.next(10);
            if (!done) continue;
            if (done->isWhole) given[done->number] = done->given[0];
            if (!done->isWhole) words.push_back(done->lastWords);
        }
        std::sort(words.begin(), words.end());
    }
};

TEST(Processes, OneOfTenAborts) {
    const TenPieces pieces([](std::size_t number) {
        if (number == 4) std::abort();
        if (number == 5) throw std::runtime_error("no more");
    });
    EXPECT_EQ(pieces.given, "abcd--ghij");
    EXPECT_EQ(pieces.words, (Texts{"ended by signal 6 (Aborted)", "no more"}));
}

// As a system does that is short of memory. The piece ends with the process that has started it; the others go on.
TEST(Processes, OneThatStartsOthersIsKilled) {
    const TenPieces pieces([](std::size_t number) {
        if (number != 2 && number != 6) return;
        kill(getppid(), SIGKILL);
        pause();
    });
    EXPECT_EQ(pieces.given, "ab-def-hij");
    EXPECT_EQ(pieces.words, (Texts{"ended by signal 9 (Killed)", "ended by signal 9 (Killed)"}));
}

// Rooms are filled while jobs look for what waits. A job that found nothing, for another had just taken the piece that
// it was rung for, once left a piece behind that nobody was rung for any more.
TEST(Processes, LeaveNoPieceBehind) {
    for (int time = 0; time < 300; ++time) {
        ProcessPool pool(8, 1, [](std::size_t, const std::string&, std::span<char>) -> std::size_t { return 0; });
        std::size_t ended = 0;
        for (std::size_t piece = 0; !pool.isFull(); ++piece) {
            pool.start(piece);
        }
        for (int inVain = 0; inVain < 50 && !pool.isIdle(); ++inVain) {
            if (pool.next(100)) inVain = 0, ++ended;
        }
        ASSERT_EQ(ended, 16U) << time;
    }
}

TEST(Results, ArriveAsTheyWereGiven) {
    MemberResult result;
    result.outcome = Outcome::finished;
    result.message = "odd";
    result.columns = {{{"a", "L"}, {"b", ""}}, 1};
    result.values = {0.1, std::nan("")};
    std::vector<char> room(1000);
    const std::size_t bytes = toBytes(result, room);
    const MemberResult read = memberResultFrom({room.data(), bytes});
    EXPECT_EQ(read.message, "odd");
    EXPECT_EQ(read.columns, result.columns);
    EXPECT_EQ(read.values[0], 0.1);
    EXPECT_TRUE(std::isnan(read.values[1]));
    EXPECT_THROW(toBytes(result, std::span(room).first(bytes - 1)), std::length_error);
    for (std::size_t less = 0; less < bytes; ++less) {
        EXPECT_THROW(memberResultFrom({room.data(), less}), std::length_error) << less;
    }
}

// Whatever a killed process has left of the file, what stands in whole lines counts.
TEST(Journals, GoOnFromAnyByte) {
    const std::string path = temporaryPath();
    MemberResult result;
    result.outcome = Outcome::finished;
    result.message = "a\tb\nc";
    result.columns = {{{"x", "L"}}, 1};
    result.values = {0.1};
    {
        Journal journal(path, "{}", 5, 7);
        journal.add(6, result);
        journal.add(5, result);
    }
    std::string whole;
    std::getline(std::ifstream(path, std::ios::binary), whole, '\0');
    std::size_t most = 0;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        std::ofstream(path, std::ios::binary) << whole.substr(0, length);
        Journal journal(path, "{}", 5, 7);
        const std::size_t done = journal.has(5) ? 2 : journal.has(6) ? 1 : 0;
        EXPECT_GE(done, most);
        most = done;
        journal.add(7, result);
        for (std::size_t member = 5; member <= 7; ++member) {
            if (!journal.has(member)) continue;
            const Journal::Row row = journal.read(member);
            EXPECT_EQ(row.message, result.message);
            EXPECT_EQ(row.values, Texts{"0.1"});
            EXPECT_EQ(journal.columns()[row.columns], result.columns);
        }
    }
    EXPECT_EQ(most, 2U);
    EXPECT_FALSE(Journal(path, "another", 5, 7).has(5));
    std::filesystem::remove(path);
}

}  // namespace
}  // namespace kesto
