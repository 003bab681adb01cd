// What a host that watches CurStep from another thread sees: it never goes back, and it moves while the run goes on.

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "host_record.h"

namespace {

constexpr std::int32_t kSteps = 200000;
constexpr std::int32_t kLinks = 1000;
constexpr std::int32_t kBrand = 1;
constexpr int kFewestSeen = 3;

// A demand that passes a chain of links.
Model chain() {
    Model model;
    model.nSteps = kSteps;
    model.components.push_back({1.0F, 45.0F, 0.0F, 0.0F, 100.0F});
    model.table(Table::InsDmd).push_back({1, std::vector<float>(kSteps, 1.0F)});
    model.specifications.push_back({0, 0, kBrand, 0, 1, 1, 2, 0.0F, 0});
    for (const int number : {3, 12, 13})
        model.specifications.push_back({0, 0, kBrand, 0, 1, 1, static_cast<float>(number), 0.0F, 0});
    for (std::int32_t id = 2; id < 2 + kLinks; ++id) {
        model.components.push_back({static_cast<float>(id), 35.0F, 0.0F, kBrand, 0.0F});
        model.connections.push_back({id, id - 1, 1, id, 1});
    }
    return model;
}

}  // namespace

int main() {
    HostRecord host(chain());
    const auto* const current = static_cast<const volatile std::int32_t*>(&host.record().CurStep);
    host.record().CurStep = 0;
    std::atomic<bool> isOver = false;
    std::atomic<bool> isReady = false;
    int seen = 0;
    bool wentBack = false;
    std::thread watcher([&] {
        std::int32_t before = *current;
        isReady = true;
        while (!isOver) {
            const std::int32_t step = *current;
            wentBack = wentBack || step < before;
            seen += step > before ? 1 : 0;
            before = step;
        }
    });
    while (!isReady)
        std::this_thread::yield();
    const std::int32_t status = host.run(1, kSteps);
    isOver = true;
    watcher.join();
    std::printf("status %d, %d values of CurStep seen, the last %d\n", status, seen, *current);
    const std::int32_t last = *current;
    host.free();
    const bool isRight = status == KESTO_SUCCESS && !wentBack && seen >= kFewestSeen && last == kSteps;
    return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
