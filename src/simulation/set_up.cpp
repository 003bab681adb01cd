// Set-up: the stages before the time loop, each of which reports its failures through the status or ErrFlag.

#include <new>

#include "binarytree.h"
#include "errors.h"
#include "simulation/overlap.h"
#include "simulation/run.h"

namespace {

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
    run.statesLieInTables = statesLieInTables(*Globals);
    run.lookups.emplace(Globals, &run.instInfo, Globals->BuildTree == 0 ? nullptr : &run.receivers,
                        run.statesLieInTables ? Lookups::By::Scan : Lookups::By::Index);
    return KESTO_SUCCESS;
} catch (const std::bad_alloc&) {
    fail(Globals, text::kNoMemory, "Lookups");
    return KESTO_SETUP_FAILURE;
}

}  // namespace

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
