// The driver: sets a run up, evaluates every component once a step in calculation order, and after the first step hands
// the rest to blocks of steps.

#include <algorithm>
#include <new>

#include "binarytree.h"
#include "components/lookup.h"
#include "components/type_codes.h"
#include "errors.h"
#include "simulation.h"
#include "simulation/blocks.h"
#include "simulation/dispatch.h"
#include "simulation/junctions.h"

namespace {

// What lives for one call.
struct Run {
    CRossSignal signals;
    CRossConnection connections;
    InstInfo instInfo;
    RCVTOLEAFS receivers;
    std::optional<Lookups> lookups;
};

// Room for `count` elements; a negative count is more than any memory has.
template <typename T>
void reserve(AUEglobals* Globals, std::vector<T>& buffer, std::int32_t count, const char* name) try {
    if (count < 0) throw std::bad_alloc();
    buffer.reserve(static_cast<std::size_t>(count));
} catch (const std::bad_alloc&) {
    fail(Globals, text::kNoMemory, name);
}

std::int32_t setUpMultipliers(AUEglobals* Globals, InstInfo& instInfo) {
    MultIds multIds;
    getCompsMultipliers(Globals, instInfo.CompntId, multIds);
    if (Globals->ErrFlag == 1) return KESTO_SETUP_FAILURE;
    std::vector<MultiplierList> unique;
    if (getListUniqStrings(multIds, unique) == KESTO_RUN_FAILURE) fail(Globals, text::kNoMemory, "NULL");
    if (!linkCompsUniqMultSeqs(multIds, unique, instInfo.SeqId)) fail(Globals, text::kNoMemory, "SeqId");
    CombineMult(Globals, multIds, unique, instInfo.TotNumComp);
    return Globals->ErrFlag == 1 ? KESTO_SETUP_FAILURE : KESTO_SUCCESS;
}

std::int32_t setUpReceivers(AUEglobals* Globals, RCVTOLEAFS& receivers) {
    BinaryTree tree;
    try {
        tree = BinaryTreeBuild(Globals->Net_Conn, Globals->Net_Compnt, Globals->nConns, Globals->nComps);
    } catch (const std::bad_alloc&) {
        fail(Globals, text::kNoMemory, "compIdNodeLink");
        return KESTO_SETUP_FAILURE;
    }
    return getReceiversLeafsSplitters(Globals, tree, receivers);
}

std::int32_t setUpLookups(AUEglobals* Globals, Run& run) try {
    run.lookups.emplace(Globals, &run.instInfo, Globals->BuildTree == 0 ? nullptr : &run.receivers);
    return KESTO_SUCCESS;
} catch (const std::bad_alloc&) {
    fail(Globals, text::kNoMemory, "Lookups");
    return KESTO_SETUP_FAILURE;
}

std::int32_t setUp(AUEglobals* Globals, Run& run) {
    const std::int32_t nComps = Globals->nComps;
    const std::int32_t nConns = Globals->nConns;
    const std::int32_t mostCells = nConns > 0 ? nConns : 0;
    reserve(Globals, run.signals, mostCells, "CRossSignal");
    reserve(Globals, run.connections.cells, mostCells, "CRossConnection");
    reserve(Globals, run.instInfo.CompntId, nComps, "CompntId");
    if (Globals->ErrFlag == 1) return KESTO_SETUP_FAILURE;

    AllocOuts(Globals);
    if (Globals->ErrFlag == 1) return KESTO_SETUP_FAILURE;

    const std::int32_t sequence =
        CalcSequence(Globals->Net_Conn, nConns, Globals->Net_Compnt, nComps, run.instInfo.CompntId);
    if (sequence != KESTO_SUCCESS) {
        fail(Globals, text::kNoSequence);
        return sequence;
    }
    if (!FormCrosConnections(run.instInfo.CompntId, Globals->Net_Conn, nConns, run.connections)) {
        fail(Globals, text::kNoMemory, "CRossConnection");
        return KESTO_SETUP_FAILURE;
    }
    run.signals.resize(run.connections.cells.size(), Signal{});

    if (const std::int32_t status = setUpMultipliers(Globals, run.instInfo); status != KESTO_SUCCESS) return status;
    if (Globals->BuildTree != 0) {
        if (const std::int32_t status = setUpReceivers(Globals, run.receivers); status != KESTO_SUCCESS) return status;
    }
    return setUpLookups(Globals, run);
}

// All inputs of a junction or mixer, sender by sender.
Signal sumOfInputs(const Run& run, std::size_t position) {
    Signal sum{};
    for (std::size_t c = run.connections.columnStart[position]; c < run.connections.columnStart[position + 1]; ++c)
        addInput(sum, run.signals[c]);
    return sum;
}

std::int32_t evaluate(Run& run, Step& step, std::size_t position, std::int32_t code) {
    AUEglobals* const Globals = step.Globals;
    if (code == code::kJunction) {
        step.out1 = junction(sumOfInputs(run, position));
        return KESTO_SUCCESS;
    }
    if (code == code::kMixer) {
        step.out1 = mixer(sumOfInputs(run, position));
        return KESTO_SUCCESS;
    }
    const std::int32_t inputs = GetFromCrossSignal(run.signals, run.connections, position, step.in1, step.in2);
    if (inputs < 0) {
        report(Globals, text::kInputCount, step.id, inputs);
        return KESTO_RUN_FAILURE;
    }
    const ComponentType* const type = findType(code);
    if (!type) {
        report(Globals, text::kUnrecognized, step.id);
        return KESTO_RUN_FAILURE;
    }
    if (type->inputs != kAnyInputs && type->inputs != inputs) {
        report(Globals, text::kWrongInputs, type->tag, step.id);
        return KESTO_RUN_FAILURE;
    }
    for (const Form* const form : type->forms) {
        // DELIBERATE: outputs are computed even when booking potentials has failed, so that their message stands and
        // the state that they write stays written.
        if (form && !form->evaluate(step) && !form->books) break;
    }
    return Globals->ErrFlag == 1 ? KESTO_RUN_FAILURE : KESTO_SUCCESS;
}

// One step by the list of components. `left`, when wanted, gets what was in the slots after each of them.
std::int32_t runStep(Run& run, Step& step, std::vector<Slots>* left = nullptr) {
    const std::vector<std::int32_t>& CompntId = run.instInfo.CompntId;
    for (std::size_t i = 0; i < CompntId.size(); ++i) {
        step.out1.quantity = -1.0F;
        step.out2.quantity = -1.0F;
        step.id = CompntId[i];
        step.row = run.lookups->findRow(step.id);
        if (!step.row) return KESTO_RUN_FAILURE;
        const std::int32_t status = evaluate(run, step, i, nint(step.row->techid));
        if (status != KESTO_SUCCESS) return status;
        PutInCrossSignal(run.signals, run.connections, i, step.out1, step.out2);
        if (left) (*left)[i] = {step.in1, step.in2, step.out1, step.out2};
    }
    return KESTO_SUCCESS;
}

// Steps up to `end` by the list of components.
std::int32_t runSteps(Run& run, Step& step, std::int32_t end) {
    for (std::int32_t& k = step.Globals->CurStep; k < end; ++k) {
        if (const std::int32_t status = runStep(run, step); status != KESTO_SUCCESS) return status;
    }
    return KESTO_SUCCESS;
}

// The current step by the list of components, which makes sure of all look-ups, and from there on as many as possible
// in blocks.
std::int32_t runBlocks(Run& run, Step& step, std::int32_t end) {
    std::vector<Slots> left(run.instInfo.CompntId.size());
    if (const std::int32_t status = runStep(run, step, &left); status != KESTO_SUCCESS) return status;
    Blocks blocks(step, run.instInfo.CompntId, run.signals, run.connections, left, end);
    ++step.Globals->CurStep;
    return blocks.run();
}

std::int32_t runAll(Run& run, Step& step, std::int32_t last) try {
    AUEglobals* const Globals = step.Globals;
    // In step 0 the state before is the state after, and outside the series there is none.
    if (const std::int32_t status = runSteps(run, step, std::min(last, 0)); status != KESTO_SUCCESS) return status;
    const std::int32_t end = std::min(last, Globals->nSteps);
    if (Globals->CurStep < end && Globals->CurStep + 1 < end) {
        if (const std::int32_t status = runBlocks(run, step, end); status != KESTO_SUCCESS) return status;
    }
    return runSteps(run, step, last);
} catch (const std::bad_alloc&) {
    fail(step.Globals, text::kNoMemory, "Form");
    return KESTO_SETUP_FAILURE;
}

}  // namespace

std::int32_t KESTO_simul(AUEglobals* Globals, std::int32_t first, std::int32_t last) {
    Run run;
    if (const std::int32_t status = setUp(Globals, run); status != KESTO_SUCCESS) return status;

    Step step;
    step.Globals = Globals;
    step.lookups = &*run.lookups;
    // first - 1 wraps like the 32-bit integer that it is.
    Globals->CurStep = static_cast<std::int32_t>(static_cast<std::uint32_t>(first) - 1U);
    return runAll(run, step, last);
}
