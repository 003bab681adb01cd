// Parts of a sweep hold what their members left, bit for bit, and the same bytes however they came to it.
#include "sweep_part.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include "sweep_csv.h"
#include "sweep_part_reader.h"

namespace kesto {
namespace {

using Values = std::vector<float>;

SweepShape shapeOf(std::size_t flows, Day start, Day end, Every every = Every::day) {
    SweepShape shape{every, periodsOf(start, end, every), {}};
    SweepTable series{kSeriesTables.data(), {}, {}};
    for (std::size_t i = 0; i < flows; ++i) {
        series.names.push_back("flow " + std::to_string(i));
        series.carries.emplace_back("water");
    }
    shape.tables.push_back(series);
    shape.tables.push_back({&kSeriesTables[2], {"tank"}, {}});
    return shape;
}

Values valuesOf(const SweepShape& shape, std::size_t member) {
    std::mt19937 random(static_cast<unsigned>(member));
    std::uniform_real_distribution<float> any(0, 1000);
    Values values(shape.values());
    for (float& value : values) {
        value = any(random);
    }
    return values;
}

bool isMissing(std::size_t member) {
    return member % 10 == 3;
}

std::string pathOf(const std::string& name) {
    return (std::filesystem::path(testing::TempDir()) / ("kesto_" + std::to_string(getpid()) + name)).string();
}

std::string bytesOf(const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

// Members in an order that goes with `step`, which has no divisor in common with their number.
void fill(SweepPart& part, const SweepShape& shape, std::size_t step) {
    for (std::size_t i = 0; i < part.count(); ++i) {
        const std::size_t member = part.first() + i * step % part.count();
        isMissing(member) ? part.setMissing(member) : part.set(member, valuesOf(shape, member));
    }
}

void expectSameBits(std::span<const float> read, const Values& expected) {
    ASSERT_EQ(read.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(std::bit_cast<std::uint32_t>(read[i]), std::bit_cast<std::uint32_t>(expected[i])) << i;
    }
}

TEST(SweepPart, HoldsEachMember) {
    const SweepShape shape = shapeOf(3, 15000, 15099);
    SweepPart part(shape, 257, 150);
    fill(part, shape, 7);
    const std::string path = pathOf("holds.nc");
    part.write(path, {{"title", "a house"}, {"source", "a test"}});
    SweepPartReader reader(path);
    EXPECT_EQ(reader.first(), 257U);
    EXPECT_EQ(reader.count(), 150U);
    EXPECT_EQ(reader.shape(), shape);
    EXPECT_EQ(reader.attributes(), (SweepAttributes{{"title", "a house"}, {"source", "a test"}}));
    Values missing(shape.values());
    layOutMissing(shape, missing);
    for (std::size_t member = 257; member < 407; ++member) {
        expectSameBits(reader.member(member), isMissing(member) ? missing : valuesOf(shape, member));
    }
    EXPECT_THROW(reader.member(407), std::runtime_error);
    EXPECT_THROW(reader.member(256), std::runtime_error);
    std::filesystem::remove(path);
}

TEST(SweepPart, IsTheSameBytesInWhateverOrderItsMembersCome) {
    const SweepShape shape = shapeOf(2, 15000, 15400, Every::month);
    const std::string one = pathOf("one.nc"), other = pathOf("other.nc"), joined = pathOf("joined.nc");
    SweepPart part(shape, 1, 100), shuffled(shape, 1, 100), copied(shape, 1, 100);
    fill(part, shape, 1);
    fill(shuffled, shape, 37);
    part.write(one, {});
    shuffled.write(other, {});
    SweepPartReader reader(one);
    for (std::size_t member = 1; member <= 100; ++member) {
        copied.set(member, reader.member(member));
    }
    copied.write(joined, reader.attributes());
    EXPECT_EQ(bytesOf(one), bytesOf(other));
    EXPECT_EQ(bytesOf(one), bytesOf(joined));
    for (const std::string& path : {one, other, joined}) {
        std::filesystem::remove(path);
    }
}

TEST(SweepPart, IsWrittenOnceItHasAllItsMembers) {
    const SweepShape shape = shapeOf(1, 0, 1);
    SweepPart part(shape, 1, 2);
    part.setMissing(2);
    EXPECT_FALSE(part.isComplete());
    EXPECT_THROW(part.write(pathOf("lacking.nc"), {}), std::logic_error);
    EXPECT_THROW(part.set(3, Values(shape.values())), std::logic_error);
    part.setMissing(1);
    EXPECT_TRUE(part.isComplete());
}

TEST(SweepPart, HasAtMost256MembersAnd256Megabytes) {
    EXPECT_EQ(membersPerPart(shapeOf(1, 0, 999)), 256U);
    // 21 rows of 40,000 days: 3.36 MB a member.
    EXPECT_EQ(membersPerPart(shapeOf(10, 0, 39'999)), 64U);
    EXPECT_EQ(membersPerPart(shapeOf(4000, 0, 39'999)), 1U);
    EXPECT_EQ(partName(12, PartFormat::netcdf), "part-00012.nc");
    EXPECT_EQ(partName(12, PartFormat::csv), "part-00012.csv");
}

TEST(SweepPart, IsCsvToo) {
    const SweepShape shape = shapeOf(1, 0, 1);
    SweepPart part(shape, 3, 66);
    for (std::size_t member = 3; member <= 68; ++member) {
        Values values(shape.values());
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = static_cast<float>(1000 * member + i);
        }
        part.set(member, values);
    }
    const std::string path = pathOf("part.csv"), whole = pathOf("whole.csv");
    part.writeCsv(path);
    const std::string text = bytesOf(path);
    const std::size_t rows = shape.rows();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1 + 66 * 2);
    EXPECT_TRUE(text.starts_with("member,date,"));
    // Of the last member, in the second group of 64, the second day: a value of each row.
    std::string last = "68,1970-01-02";
    for (std::size_t row = 0; row < rows; ++row) {
        last += ',' + std::to_string(68000 + 2 * row + 1);
    }
    EXPECT_TRUE(text.ends_with(last + '\n')) << text.substr(text.size() - 200);

    joinSweepCsv({path, path}, whole);
    const std::string header = text.substr(0, text.find('\n') + 1);
    EXPECT_EQ(bytesOf(whole), text + text.substr(header.size()));
}

TEST(SweepPart, RefusesOtherFiles) {
    EXPECT_THROW(SweepPartReader("/dev/null"), std::runtime_error);
}

TEST(SweepShape, PeriodsHoldTheDaysOfTheRun) {
    const Day start = dayOf({2012, 1, 30}), end = dayOf({2012, 3, 1});
    EXPECT_EQ(periodsOf(start, start + 1, Every::day), (std::vector<Period>{{start, start}, {start + 1, start + 1}}));
    EXPECT_EQ(
        periodsOf(start, end, Every::month),
        (std::vector<Period>{{start, dayOf({2012, 1, 31})}, {dayOf({2012, 2, 1}), dayOf({2012, 2, 29})}, {end, end}}));
    EXPECT_EQ(periodsOf(start - 366, end, Every::year),
              (std::vector<Period>{{start - 366, dayOf({2011, 12, 31})}, {dayOf({2012, 1, 1}), end}}));
    EXPECT_EQ(everyFrom("month"), Every::month);
    EXPECT_EQ(everyFrom("week"), std::nullopt);
}

// Two months: 31 January 2013, and the first two days of February.
class Months : public testing::Test {
  protected:
    Months() {
        model_.simulation.start = dayOf({2013, 1, 31});
        model_.simulation.end = dayOf({2013, 2, 2});
        results_.model = &model_;
        results_.steps = 3;
        results_.flows.push_back({"a", "L", 0, 1, Carries::water, signals_});
        results_.flows.push_back({"soil", "mm", 1, 1, Carries::water, soil_});
        results_.states.push_back({"tank", SeriesKind::storage, "L", storage_});
    }

    Values of(Every every) {
        const SweepShape shape = sweepShapeOf(results_, every);
        Values values(shape.values());
        layOut(shape, results_, values);
        return values;
    }

    Model model_;
    Signal signals_[3] = {{-1, 5}, {3, 10}, {1, 30}};
    Signal soil_[3] = {{0, 4}, {2, -1}, {0, 7}};
    float storage_[3] = {7, 8, 9};
    Results results_{};
};

TEST_F(Months, DaysAreAsTheyWere) {
    EXPECT_EQ(of(Every::day), (Values{-1, 3, 1, 5, 10, 30, 0, 2, 0, 4, -1, 7, 7, 8, 9}));
}

TEST_F(Months, FlowsAreSummedAndStatesAreTheLast) {
    EXPECT_EQ(of(Every::month), (Values{0, 4, -1, 15, 0, 2, -1, -1, 7, 9}));
    EXPECT_EQ(of(Every::year), (Values{4, 15, 2, -1, 9}));
}

TEST_F(Months, AMemberThatStoppedHasAnotherShape) {
    const SweepShape shape = sweepShapeOf(results_, Every::day);
    results_.steps = 2;
    Values values(shape.values());
    EXPECT_THROW(layOut(shape, results_, values), std::logic_error);
}

}  // namespace
}  // namespace kesto
