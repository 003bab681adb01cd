// The driver: after set-up the first step by turns, in which all look-ups are made, then as many steps as possible in
// blocks.

#include <algorithm>
#include <new>

#include "errors.h"
#include "simulation.h"
#include "simulation/blocks.h"
#include "simulation/overlap.h"
#include "simulation/plan.h"

namespace {

// Steps up to `end` by turns.
std::int32_t runTurns(Run& run, Step& step, std::int32_t end) {
    for (std::int32_t& k = step.Globals->CurStep; k < end; ++k) {
        BoundNetwork network(run.instInfo.CompntId.size());
        if (const std::int32_t status = takeTurns(run, step, network); status != KESTO_SUCCESS) return status;
    }
    return KESTO_SUCCESS;
}

// The current step by turns, then the steps before `end` in blocks, as far as blocks go.
std::int32_t runBlocks(Run& run, Step& step, std::int32_t end, std::int32_t blockLength) {
    BoundNetwork network(run.instInfo.CompntId.size());
    if (const std::int32_t status = takeTurns(run, step, network); status != KESTO_SUCCESS) return status;
    ++step.Globals->CurStep;
    const Overlap overlap = overlapOfWritten(*step.Globals, network.notes.accesses);
    if (overlap == Overlap::OfTemperatures) return KESTO_SUCCESS;
    const bool byTurns = overlap == Overlap::OfSeries || network.notes.canStop;
    const Plan plan(network, run.connections, {byTurns, blockLength, end - step.Globals->CurStep});
    return Blocks(run, step, network, plan).run(end);
}

std::int32_t runAll(Run& run, Step& step, std::int32_t last, std::int32_t blockLength) try {
    AUEglobals* const Globals = step.Globals;
    // In step 0 the state before is the state after; outside the series there is no state.
    if (const std::int32_t status = runTurns(run, step, std::min(last, 0)); status != KESTO_SUCCESS) return status;
    const std::int32_t end = std::min(last, Globals->nSteps);
    const bool mayBlock = blockLength != kNoBlocks && !run.statesLieInTables;
    if (mayBlock && Globals->CurStep < end && Globals->CurStep + 1 < end) {
        if (const std::int32_t status = runBlocks(run, step, end, blockLength); status != KESTO_SUCCESS) return status;
    }
    return runTurns(run, step, last);
} catch (const std::bad_alloc&) {
    fail(step.Globals, text::kNoMemory, "Form");
    return KESTO_SETUP_FAILURE;
}

}  // namespace

std::int32_t simulate(AUEglobals* Globals, std::int32_t first, std::int32_t last, std::int32_t blockLength) {
    Run run;
    if (const std::int32_t status = setUp(Globals, run); status != KESTO_SUCCESS) return status;

    Step step;
    step.Globals = Globals;
    step.lookups = &*run.lookups;
    // first - 1 wraps like the 32-bit integer that it is.
    Globals->CurStep = static_cast<std::int32_t>(static_cast<std::uint32_t>(first) - 1U);
    return runAll(run, step, last, blockLength);
}
