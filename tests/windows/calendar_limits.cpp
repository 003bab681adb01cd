// Windows' own calendar knows the times from 1970 to 3000 and refuses others, where other systems go on. (Where in
// January 3001 it ends depends on the version of its library.) One quota
// limiter (64), whose totals need the date, is run for single days on both sides of each limit.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "child.h"
#include "host_record.h"
#include "utc.h"

namespace {

constexpr std::int32_t kLastStart = 2147472000;  // 2038-01-19 00:00 UTC
constexpr std::int32_t kTo3000 = 351709;         // from there to 3000-12-31 [d]

Model limiter(std::int32_t start, std::int32_t steps) {
    Model model;
    model.StartTime = start;
    model.nSteps = steps;
    model.components = {{1, 30, 0, 0, 0}, {2, 64, 0, 1, 0}};
    model.connections = {{1, 1, 1, 2, 1}};
    for (const float number : {61.0F, 62.0F, 63.0F})
        model.specifications.push_back({0, 0, 1, 0, 1, 1, number, 10, 0});
    return model;
}

// The error of a run of one step, counted from 1.
std::string errorOf(std::int32_t start, std::int32_t step) {
    return runInChild([&] {
               HostRecord host(limiter(start, step));
               const bool good = host.run(step, step) == KESTO_SUCCESS;
               return good == host.record().ErrFlag ? std::string("status and flag disagree")
                                                    : std::string(host.record().ErrMsg);
           })
        .answer;
}

int failed = 0;

void expect(const char* what, const std::string& expected, const std::string& got) {
    std::printf("%s: \"%s\"\n", what, got.c_str());
    if (got == expected) return;
    std::printf("  expected \"%s\"\n", expected.c_str());
    ++failed;
}

}  // namespace

int main() {
    useUtc();
#ifdef _WIN32
    const std::string outside = "time_t overflow!";
#else
    const std::string outside;
#endif
    expect("the second before 1970", outside, errorOf(-1, 1));
    expect("the first second of 1970", "", errorOf(0, 1));
    expect("1901-12-14", outside, errorOf(-2147483647, 1));
    expect("3000-12-31", "", errorOf(kLastStart, kTo3000 + 1));
    expect("3001-02-01", outside, errorOf(kLastStart, kTo3000 + 1 + 32));
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
