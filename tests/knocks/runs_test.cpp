// Runs far beyond the usual in one direction: 200,000 steps, and 5,000 components. Results are compared with what
// arithmetic by hand gives; memory must grow with steps and connections, not with the square of the components.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <string>

#include "child.h"
#include "host_record.h"
#include "networks.h"

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kMeasuresMemory = false;
#elif defined(__has_feature)
constexpr bool kMeasuresMemory = !__has_feature(address_sanitizer);
#else
constexpr bool kMeasuresMemory = true;
#endif

constexpr unsigned kMostSeconds = 300;

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// Runs a model in a process of its own and says what is wrong with its results: nothing, or one line.
void run(const char* name, const Model& model, long mostKilobytes,
         const std::function<std::string(HostRecord&)>& findFault) {
    const ChildResult child = runInChild(
        [&]() -> std::string {
            HostRecord host(model);
            const long before = peakKilobytes();
            const auto start = std::chrono::steady_clock::now();
            const std::int32_t status = host.run(1, model.nSteps);
            const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
            const long grown = peakKilobytes() - before;
            std::printf("%s: %zu components, %d steps: %.2f s, %ld kB\n", name, model.components.size(), model.nSteps,
                        seconds.count(), grown);
            if (status != KESTO_SUCCESS) return std::to_string(status) + " " + host.record().ErrMsg;
            if (!host.damage().empty()) return host.damage();
            std::string fault = findFault(host);
            if (kMeasuresMemory && grown > mostKilobytes) fault += std::to_string(grown) + " kB";
            host.free();
            return fault;
        },
        kMostSeconds);
    std::fputs(child.stdout_.c_str(), stdout);
    EXPECT_TRUE(child.exited()) << child.describe();
    EXPECT_EQ(child.answer, "");
}

bool isFirstOfYear(std::int32_t day) {
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{day}}};
    return date.month() == std::chrono::January && date.day() == std::chrono::day{1};
}

// The roof gives 150 a day, of which the limiter lets 0.5 pass once a year; the rest is logged.
std::string faultOfDaily(HostRecord& host) {
    const AUEglobals& record = host.record();
    const auto* const logger = std::find_if(record.Logs, record.Logs + record.nLogs, [&](const SignalSeriesEntry& log) {
        return static_cast<float>(log.id) == record.Net_Compnt[2].id;
    });
    for (std::int32_t k = 0; k < record.nSteps; ++k) {
        if (logger->Signal[k].quantity != (isFirstOfYear(k) ? 149.5F : 150.0F))
            return "logger, step " + std::to_string(k);
        if (!(record.NrgPot[0].Value[k] < 0.0F)) return "energy, step " + std::to_string(k);
        for (std::int32_t i = 0; i < record.nWatQuant; ++i) {
            const float level = record.WatQuant[i].Value[k];
            if (!(level >= 0.0F && level <= 0.5F)) return "level, step " + std::to_string(k);
        }
    }
    return "";
}

// In every house the roof gives 150 a day and the toilet takes 4: the tank of 1000 runs over on the seventh day. Half
// of what the toilet lets go is lost in its sewer.
std::string faultOfHouses(HostRecord& host) {
    const AUEglobals& record = host.record();
    const auto houses = static_cast<float>(record.nLogs);
    for (std::int32_t i = 0; i < record.nLogs; ++i) {
        float level = 0.0F;
        for (std::int32_t k = 0; k < record.nSteps; ++k) {
            const float overflow = std::max(level + 146.0F - 1000.0F, 0.0F);
            level = std::min(level + 146.0F, 1000.0F);
            if (std::fabs(record.Logs[i].Signal[k].quantity) != overflow)
                return "overflow of house " + std::to_string(i);
            if (record.WatQuant[i].Value[k] != level) return "level of house " + std::to_string(i);
            if (record.LosPot[0].Value[k] != 2.0F * houses) return "losses, step " + std::to_string(k);
        }
    }
    return record.nLogs == 1000 ? "" : "number of loggers";
}

TEST(Runs, TwoHundredThousandSteps) {
    run("long", makeDaily(200'000), 64'000, faultOfDaily);
}

TEST(Runs, FiveThousandComponents) {
    run("large", makeHouses(1000, 30), 32'000, faultOfHouses);
}

// The system's own refusal, not a staged one.
TEST(Runs, MoreStepsThanMemory) {
    if (!kMeasuresMemory) GTEST_SKIP() << "the address sanitizer needs more memory than the limit leaves";
    Model model;
    model.nSteps = std::numeric_limits<std::int32_t>::max();
    model.components = {{1, 30, 0, 0, 0}, {2, 26, 0, 0, 0}};
    model.connections = {{0, 1, 1, 2, 1}};
    const ChildResult child = runInChild([&] {
        HostRecord host(model);
        const rlimit limit{1 << 30, 1 << 30};
        setrlimit(RLIMIT_AS, &limit);
        const std::int32_t status = host.run(1, 3);
        host.free();
        return std::to_string(status) + " " + host.record().ErrMsg;
    });
    EXPECT_TRUE(child.exited()) << child.describe();
    EXPECT_EQ(child.answer, "-123456798 Cannot allocate memory for Globals->Logs[i].Signal!");
}

}  // namespace
