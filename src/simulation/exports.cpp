// Apart from the driver, so that tests can link it with a KESTO_simul of their own.

#include <atomic>

#include "errors.h"
#include "simulation.h"

namespace {

// The record whose run is going on; null without one. Runs share statics, so that a process has one at a time.
std::atomic<const AUEglobals*> running = nullptr;

struct Turn {
    ~Turn() { running = nullptr; }
};

}  // namespace

std::int32_t KESTO_simul(AUEglobals* Globals, std::int32_t first, std::int32_t last) {
    const AUEglobals* other = nullptr;
    if (running.compare_exchange_strong(other, Globals)) {
        const Turn turn;
        return simulate(Globals, first, last);
    }
    // A record that is running belongs to its run.
    if (other != Globals) report(Globals, text::kBusy);
    return KESTO_SETUP_FAILURE;
}
