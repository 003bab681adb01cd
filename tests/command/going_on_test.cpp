// A run that goes on from the states of a day is the run in one piece, bit for bit, or it is refused.
#include "going_on.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <regex>
#include <sstream>

#include "commands.h"
#include "load.h"
#include "model_text.h"
#include "network.h"
#include "step_memory.h"

namespace kesto {
namespace {

namespace fs = std::filesystem;

const std::vector<std::string> kRemembering{"delay", "quota_limiter", "solar_panel", "net_radiation"};

// Values that change from day to day, the same for the same day.
std::string weekly(std::mt19937& random, double most) {
    std::string text = "{ weekly = [";
    for (int day = 0; day < 7; ++day) {
        text += fmt::format("{}{:.3f}", day == 0 ? "" : ", ", most * static_cast<double>(random() % 1000) / 1000);
    }
    return text + "] }";
}

std::string replaced(std::string text, const std::string& pattern, const std::function<std::string()>& by) {
    std::string result;
    std::smatch match;
    const std::regex expression(pattern);
    while (std::regex_search(text, match, expression)) {
        result += match.prefix().str() + by();
        text = match.suffix();
    }
    return result + text;
}

// Two months in which each day differs.
std::string restless(std::mt19937& random, const std::string& steady) {
    std::string text = replaced(steady, "start = 2015-12-\\d+", [] { return "start = 2015-11-01"; });
    text = replaced(text, "\nrainfall = [^\n]*", [&] { return "\nrainfall = " + weekly(random, 20); });
    text = replaced(text, "\ntemperature = [^\n]*", [&] { return "\ntemperature = " + weekly(random, 25); });
    text = replaced(text, "\ntemperature_max = [^\n]*", [] { return "\ntemperature_max = 30"; });
    text = replaced(text, "\ntemperature_min = [^\n]*", [&] { return "\ntemperature_min = " + weekly(random, 25); });
    text = replaced(text, "\nwind = [^\n]*", [&] { return "\nwind = " + weekly(random, 40); });
    text = replaced(text, "\noccupancy = [^\n]*", [&] { return "\noccupancy = " + weekly(random, 5); });
    text = replaced(text, "\nthreshold = [^\n]*", [&] { return "\nthreshold = " + weekly(random, 100); });
    return replaced(text, "\ndemand = [^\n]*", [&] { return "\ndemand = " + weekly(random, 300); });
}

using Table = std::map<std::string, std::string>;  // rows by date; "date": the header

Table tableOf(const std::string& path) {
    Table rows;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        rows[line.substr(0, line.find(','))] = line;
    }
    return rows;
}

// In memory where there is such a place: results are brought to the disk, which takes longer than all else.
std::string temporary(const std::string& name) {
    const fs::path memory = "/dev/shm";
    return ((fs::is_directory(memory) ? memory : fs::temp_directory_path()) /
            fmt::format("kesto-going-on-{}-{}", getpid(), name))
        .string();
}

int runQuietly(RunOptions options, const std::string& model, const std::string& output) {
    options.model = model;
    options.output = output;
    options.quiet = true;
    testing::internal::CaptureStderr();
    const int status = runCommand(options);
    testing::internal::GetCapturedStderr();
    return status;
}

// Every day of the later run stands in the earlier one, digit for digit; 0: there is nothing to compare.
std::size_t expectSameDays(const std::string& whole, const std::string& part) {
    std::size_t compared = 0;
    for (const char* name : {"flows.csv", "states.csv", "potentials.csv", "qualities.csv"}) {
        const Table later = tableOf(part + "/" + name), all = tableOf(whole + "/" + name);
        for (const auto& [date, row] : later) {
            // A quality that is absent on all days of the later run has no column there.
            if (std::string_view(name) == "qualities.csv" && later.at("date") != all.at("date")) break;
            EXPECT_EQ(all.at(date), row) << name;
            ++compared;
        }
    }
    return compared;
}

TEST(GoingOn, IsTheRunInOnePiece) {
    std::mt19937 random(20261122);
    const std::string whole = temporary("whole"), part = temporary("part");
    const test::Mixture mixture{{"abstraction", "potable_treatment", "tank", "mixer", "splitter", "treatment_plant",
                                 "service_reservoir", "well"},
                                kRemembering};
    const int wanted = test::isLong() ? 300 : 100;
    int networks = 0, compared = 0, refused = 0;
    for (int trial = 0; networks < wanted && trial < 10 * wanted; ++trial) {
        const std::string text = restless(random, test::randomModel(random, 3 + trial % 14, mixture));
        const std::string model = test::writeModel(text);
        if (runQuietly({}, model, whole) != kGood) continue;
        ++networks;
        for (const int day : {2, 3 + static_cast<int>(random() % 50), 61}) {
            RunOptions options;
            options.read.from = toText(dayOf({2015, 11, 1}) + day - 1);
            options.read.statesFrom = whole;
            const int status = runQuietly(options, model, part);
            if (status == kGood) {
                EXPECT_GT(expectSameDays(whole, part), 0U);
                ++compared;
            } else {
                // Nothing but a quality that was left there is in the way.
                EXPECT_EQ(status, kBadModel);
                ++refused;
                options.read.approximate = true;
                EXPECT_EQ(runQuietly(options, model, part), kGood) << text;
            }
            ASSERT_FALSE(HasFailure()) << options.read.from << '\n' << text;
        }
    }
    EXPECT_EQ(networks, wanted);
    EXPECT_EQ(compared + refused, 3 * wanted);
    EXPECT_GT(compared, 2 * wanted);
    EXPECT_GT(refused, 0);
    fs::remove_all(whole);
    fs::remove_all(part);
}

}  // namespace
}  // namespace kesto
