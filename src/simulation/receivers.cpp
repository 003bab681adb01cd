// Receiving units (33, 37): where their water is traced to.
//
// For each way downstream of a unit: the first leaf on it that no earlier way of the same unit has taken, and the
// splitters (36) before that leaf with the output through which the way leaves each.
//
// DELIBERATE: leafs are matched on decimal text. A type is a leaf type when its digits occur in the unit's list of leaf
// types ("37 33" also admits 3 and 7), and a leaf is taken when its digits occur inside an id taken before (5 after
// 15). Ids with the same number of digits keep clear of the second rule.

#include <new>
#include <string>

#include "binarytree.h"
#include "components/lookup.h"
#include "errors.h"
#include "simulation.h"

namespace {

constexpr std::int32_t kRefilledStore = 33;
constexpr std::int32_t kThroughput = 37;
constexpr std::int32_t kSplitter = 36;

// Type code of a component. Reports an unknown id and gives nothing back.
std::optional<std::int32_t> getcomptechid(AUEglobals* Globals, std::int32_t compId) {
    const ComponentRow* const row = findRow(Globals, compId);
    if (!row) {
        fail(Globals, text::kUnknownOnPath, compId);
        return std::nullopt;
    }
    return nint(row->techid);
}

bool occursIn(const std::string& text, std::int32_t number) {
    return text.find(std::to_string(number)) != std::string::npos;
}

// Follows one way to its leaf. False when it meets an unknown component.
bool findLeaf(AUEglobals* Globals, const PathToLeaf& path, const std::string& leafTypes, std::string& takenLeafs,
              RCVTOLEAF& leaf) {
    for (std::size_t icomp = 1; icomp < path.stops.size(); ++icomp) {
        const std::int32_t compId = path.stops[icomp].compId;
        const auto type = getcomptechid(Globals, compId);
        if (!type) return false;
        if (*type == kSplitter) {
            invariant(icomp + 1 < path.stops.size(), "icomp+1<pathsToLeafs.PathToLeaf[ipath].pathlen", "simulation",
                      131);
            leaf.splitters.push_back({compId, path.stops[icomp + 1].port});
        } else if (occursIn(leafTypes, *type) && !occursIn(takenLeafs, compId)) {
            takenLeafs += " " + std::to_string(compId);
            leaf.leaf_id = compId;
            return true;
        }
    }
    leaf.splitters.clear();
    return true;
}

std::int32_t getRcvLeafsSplitters(AUEglobals* Globals, RCVTOLEAFS& table, std::int32_t receiverId,
                                  const std::string& leafTypes) {
    Node* const node = BinaryTreeFetchNode(receiverId);
    if (!node) {
        fail(Globals, text::kNoNode);
        return KESTO_RUN_FAILURE;
    }
    const char* what = "pathsToLeafs";
    try {
        const std::vector<PathToLeaf>& paths = PathsBuild(node);
        what = "RCVTOLEAFS";
        Receiver& receiver = table.emplace_back(Receiver{receiverId, {}});
        what = "RCVTOLEAF";
        receiver.paths.reserve(paths.size());
        what = "RCVTOLEAF[ipath].Split_id";
        std::string takenLeafs;
        for (const PathToLeaf& path : paths) {
            RCVTOLEAF leaf;
            if (!findLeaf(Globals, path, leafTypes, takenLeafs, leaf)) return KESTO_RUN_FAILURE;
            receiver.paths.push_back(std::move(leaf));
        }
        return KESTO_SUCCESS;
    } catch (const std::bad_alloc&) {
        fail(Globals, text::kNoMemory, what);
        return KESTO_SETUP_FAILURE;
    }
}

}  // namespace

std::int32_t getReceiversLeafsSplitters(AUEglobals* Globals, RCVTOLEAFS& table) {
    std::int32_t status = KESTO_SUCCESS;
    for (std::int32_t i = 0; i < Globals->nComps && status == KESTO_SUCCESS; ++i) {
        // DELIBERATE: id and type are cut here, not rounded as everywhere else.
        const auto id = truncated(static_cast<double>(Globals->Net_Compnt[i].id));
        const auto type = truncated(static_cast<double>(Globals->Net_Compnt[i].techid));
        if (type == kRefilledStore) status = getRcvLeafsSplitters(Globals, table, id, "37 33");
        if (type == kThroughput) status = getRcvLeafsSplitters(Globals, table, id, "39 38");
    }
    PathsKill();
    return status;
}
