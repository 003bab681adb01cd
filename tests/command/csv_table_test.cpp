// A table of CSV holds every value's bits, in the order of the steps, however many blocks and threads make it.
#include "csv_table.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include "model_text.h"

namespace kesto {
namespace {

std::string textOf(float value) {
    if (std::isnan(value)) return "nan";
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

void expectWritten(const std::vector<std::vector<float>>& series, std::size_t stride) {
    std::vector<CsvColumn> columns;
    std::ostringstream expected;
    expected << "date";
    const std::size_t steps = series.front().size() / stride;
    for (std::size_t i = 0; i < series.size(); ++i) {
        columns.push_back({std::to_string(i), series[i].data(), stride});
        expected << ',' << i;
    }
    expected << '\n';
    for (std::size_t step = 0; step < steps; ++step) {
        expected << step;
        for (const std::vector<float>& values : series) {
            expected << ',' << textOf(values[step * stride]);
        }
        expected << '\n';
    }
    const std::string path = test::writeModel("") + ".csv";
    writeCsvTable(
        path, steps, [](std::size_t step) { return std::to_string(step); }, columns);
    std::ostringstream found;
    found << std::ifstream(path, std::ios::binary).rdbuf();
    EXPECT_TRUE(found.str() == expected.str()) << series.size() << " columns, " << steps << " steps";
}

TEST(CsvTable, HoldsTheBitsOfAnyValue) {
    std::vector<float> values{0,         -0.0F, FLT_MAX, -FLT_MAX, FLT_MIN, FLT_TRUE_MIN, -FLT_TRUE_MIN,   INFINITY,
                              -INFINITY, NAN,   -NAN,    1e-5F,    0.1F,    16777216,     -1.17549435e-38F};
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
        values.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(random())));
        if (random() % 2 == 0) values.push_back(values[random() % values.size()]);
    }
    expectWritten({values}, 1);
}

TEST(CsvTable, KeepsTheOrderOverBlocks) {
    std::mt19937 random(4);
    for (const auto& [columns, steps] : {std::pair{1, 1}, {3, 17}, {2000, 400}, {7, 40000}}) {
        std::vector<std::vector<float>> series(static_cast<std::size_t>(columns));
        for (std::vector<float>& values : series) {
            for (int i = 0; i < 2 * steps; ++i) {
                values.push_back(static_cast<float>(random() % 5000) / 7);
            }
        }
        expectWritten(series, 2);
    }
}

TEST(CsvTable, SaysWhatCannotBeWritten) {
    const float value = 1;
    EXPECT_THROW(writeCsvTable("/dev/full", 100000, [](std::size_t) { return std::string("day"); }, {{"a", &value, 0}}),
                 std::runtime_error);
}

}  // namespace
}  // namespace kesto
