// Two threads that call KESTO_simul at once: one of them runs, the other is refused and told so in its own record.

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "AUEglobals.h"

namespace {

constexpr std::int32_t kManySteps = 20000000;  // half a second or more; steps need no series here
constexpr int kCalls = 500;
constexpr char kBusy[] = "Another run is going on in this process!";

int problems = 0;

void check(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", what);
    ++problems;
}

// Two junctions and a logger, which records 0 with quality -1.
struct Host {
    ComponentRow components[3] = {{1, 30, 0, 0, 0}, {2, 30, 0, 0, 0}, {3, 26, 0, 0, 0}};
    ConnectionRow connections[2] = {{1, 1, 1, 2, 1}, {2, 2, 1, 3, 1}};
    AUEglobals record{};

    explicit Host(std::int32_t nComps) {
        record.nSteps = 5;
        record.Net_Compnt = components;
        record.nComps = nComps;
        record.Net_Conn = connections;
        record.nConns = nComps - 1;
    }
};

std::string bytesOf(const AUEglobals& record) {
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

void checkRefused(Host& other) {
    const AUEglobals before = other.record;
    check(KESTO_simul(&other.record, 1, 5) == KESTO_SETUP_FAILURE, "the status of a call that is refused");
    check(std::strcmp(other.record.ErrMsg, kBusy) == 0, "its text");
    std::memcpy(other.record.ErrMsg, before.ErrMsg, sizeof before.ErrMsg);
    check(bytesOf(other.record) == bytesOf(before), "all else of its record is as it was");
}

void checkRuns(Host& host, const char* after) {
    host.record.ErrFlag = 0;
    check(KESTO_simul(&host.record, 1, 5) == KESTO_SUCCESS, after);
    FreeAUEglobals(&host.record);
}

// While a long run is going on.
void refuseOthers() {
    Host running(2);
    Host other(3);
    const auto* const step = static_cast<const volatile std::int32_t*>(&running.record.CurStep);
    std::int32_t status = 0;
    std::thread thread([&] { status = KESTO_simul(&running.record, 1, kManySteps); });
    while (*step == 0)
        std::this_thread::yield();
    checkRefused(other);
    check(KESTO_simul(&running.record, 1, 5) == KESTO_SETUP_FAILURE, "the record that is running is refused, too");
    check(running.record.ErrMsg[0] == '\0' && running.record.ErrFlag == 0, "and left alone");
    check(*step < kManySteps, "the long run was going on all the time");
    thread.join();
    check(status == KESTO_SUCCESS && *step == kManySteps, "it ends well");
    FreeAUEglobals(&running.record);
    checkRuns(other, "a run after it");
}

// However a call ends, the next one runs.
void runAfterFailures() {
    Host host(3);
    host.components[1].techid = 99;
    check(KESTO_simul(&host.record, 1, 5) == KESTO_RUN_FAILURE, "an unknown type");
    FreeAUEglobals(&host.record);
    host.components[1].techid = 30;
    checkRuns(host, "a run after one that failed");
    host.record.nConns = -1;
    check(KESTO_simul(&host.record, 1, 5) == KESTO_SETUP_FAILURE, "a negative number of connections");
    FreeAUEglobals(&host.record);
    host.record.nConns = 2;
    checkRuns(host, "a run after a set-up that failed");
}

// Each call runs as if alone, or is refused.
void takeTurns() {
    std::atomic<int> faults = 0;
    const auto call = [&] {
        Host host(3);
        for (int done = 0; done < kCalls;) {
            const std::int32_t status = KESTO_simul(&host.record, 1, 5);
            if (status != KESTO_SUCCESS) {
                if (status != KESTO_SETUP_FAILURE || std::strcmp(host.record.ErrMsg, kBusy) != 0) ++faults;
                std::this_thread::yield();
                continue;
            }
            const Signal& last = host.record.Logs[0].Signal[4];
            if (last.quantity != 0.0F || last.quality != -1.0F || host.record.CurStep != 5) ++faults;
            FreeAUEglobals(&host.record);
            ++done;
        }
    };
    std::thread one(call);
    std::thread other(call);
    one.join();
    other.join();
    check(faults == 0, "two threads that take turns");
}

}  // namespace

int main() {
    refuseOthers();
    runAfterFailures();
    takeTurns();
    return problems == 0 ? 0 : 1;
}
