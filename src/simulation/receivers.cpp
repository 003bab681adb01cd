// Receiving units (service reservoir, treatment plant): where their water is traced to.
//
// For each path downstream of a unit: the first leaf on it that no earlier path of the unit has taken, and the
// splitters before that leaf, each with the output through which the path leaves it. Paths without a leaf add nothing
// to what a unit receives and have no record.
//
// DELIBERATE: leaves are matched on decimal text. A type is a leaf type when its digits occur in the unit's list of
// leaf types ("37 33" also admits 3 and 7), and a leaf is taken when its digits occur in an id taken before (5 after
// 15). Among ids with the same number of digits that does not happen.

#include <algorithm>
#include <limits>
#include <map>
#include <new>
#include <string>

#include "binarytree.h"
#include "components/lookup.h"
#include "components/type_codes.h"
#include "errors.h"
#include "simulation.h"
#include "simulation/dispatch.h"

namespace {

// "37 33": the leaf types of a receiving unit as the text that types are searched in.
std::string leafTypesOf(const ComponentType& type) {
    return std::to_string(type.leafTypes[0]) + " " + std::to_string(type.leafTypes[1]);
}

bool isLeaf(const Node& node, const std::string& leafTypes) {
    return node.isKnown && node.techId != code::kSplitter &&
           leafTypes.find(std::to_string(node.techId)) != std::string::npos;
}

// What matters on a path: leaves, and what must not be there: unknown components, and splitters that send to nothing.
std::vector<bool> findWhatMatters(const BinaryTree& tree, const std::string& leafTypes) {
    std::vector<bool> matters;
    for (const Node& node : tree.nodes) {
        const bool isFault = !node.isKnown || (node.techId == code::kSplitter && node.isLast());
        matters.push_back(isFault || isLeaf(node, leafTypes));
    }
    return matters;
}

// All units of one type.
class LeafSearch : public PathSearch {
  public:
    LeafSearch(AUEglobals* Globals, const BinaryTree& tree, const std::string& leafTypes, std::int32_t longestPath)
        : PathSearch(tree, findWhatMatters(tree, leafTypes), longestPath),
          Globals_(Globals),
          tree_(tree),
          leafTypes_(leafTypes) {
        for (const Node& node : tree.nodes) {
            if (isLeaf(node, leafTypes)) fewestDigits_ = std::min(fewestDigits_, std::to_string(node.compId).size());
        }
    }

    // Appends the entry of a unit to the table.
    std::int32_t getRcvLeafsSplitters(RCVTOLEAFS& table, std::int32_t receiverId) try {
        const Node* const node = BinaryTreeFetchNode(tree_, receiverId);
        if (!node) {
            fail(Globals_, text::kNoNode);
            return KESTO_RUN_FAILURE;
        }
        what_ = "RCVTOLEAFS";
        receiver_ = &table.emplace_back(Receiver{receiverId, {}});
        what_ = kPaths;
        return PathsBuild(node) ? KESTO_SUCCESS : KESTO_RUN_FAILURE;
    } catch (const std::bad_alloc&) {
        fail(Globals_, text::kNoMemory, what_);
        return KESTO_SETUP_FAILURE;
    }

  private:
    static constexpr const char* kPaths = "pathsToLeafs";

    bool found(const std::vector<Stop>& path, std::size_t at) override {
        const Node& leaf = *path[at].node;
        if (!leaf.isKnown) {
            fail(Globals_, text::kUnknownOnPath, leaf.compId);
            return false;
        }
        invariant(leaf.techId != code::kSplitter, "icomp+1<pathsToLeafs.PathToLeaf[ipath].pathlen", "simulation", 131);
        what_ = "RCVTOLEAF";
        RCVTOLEAF& record = receiver_->paths.emplace_back();
        record.leaf_id = leaf.compId;
        what_ = "RCVTOLEAF[ipath].Split_id";
        for (std::size_t icomp = 1; icomp < at; ++icomp) {
            if (path[icomp].node->techId != code::kSplitter) continue;
            record.splitters.push_back({path[icomp].node->compId, path[icomp + 1].port});
        }
        what_ = kPaths;
        take(leaf.compId);
        return true;
    }

    // From now on each leaf whose digits occur in this id is taken.
    void take(std::int32_t compId) {
        const std::string digits = std::to_string(compId);
        for (std::size_t begin = 0; begin < digits.size(); ++begin) {
            for (std::size_t length = fewestDigits_; length <= digits.size() - begin; ++length)
                dismissLeaf(digits.substr(begin, length));
        }
    }

    void dismissLeaf(const std::string& digits) {
        if (digits == "-") return;
        const long long id = std::stoll(digits);
        if (id > std::numeric_limits<std::int32_t>::max()) return;  // the digits alone of the lowest number
        const Node* const node = BinaryTreeFetchNode(tree_, static_cast<std::int32_t>(id));
        if (node && isLeaf(*node, leafTypes_)) dismiss(*node);
    }

    AUEglobals* const Globals_;
    const BinaryTree& tree_;
    const std::string leafTypes_;
    std::size_t fewestDigits_ = 11;  // of any leaf's id, a sign among them
    const char* what_ = kPaths;
    Receiver* receiver_ = nullptr;
};

std::int32_t traceReceivers(AUEglobals* Globals, const BinaryTree& tree, RCVTOLEAFS& table, std::int32_t longestPath) {
    std::map<std::int32_t, LeafSearch> searches;  // by type
    std::int32_t status = KESTO_SUCCESS;
    for (std::int32_t i = 0; i < Globals->nComps && status == KESTO_SUCCESS; ++i) {
        // DELIBERATE: id and type are cut here, not rounded as everywhere else.
        const auto id = truncated(static_cast<double>(Globals->Net_Compnt[i].id));
        const ComponentType* const type = findType(truncated(static_cast<double>(Globals->Net_Compnt[i].techid)));
        if (!type || !type->isReceiver()) continue;
        LeafSearch& search =
            searches.try_emplace(type->code, Globals, tree, leafTypesOf(*type), longestPath).first->second;
        status = search.getRcvLeafsSplitters(table, id);
    }
    return status;
}

}  // namespace

std::int32_t getReceiversLeafsSplitters(AUEglobals* Globals, const BinaryTree& tree, RCVTOLEAFS& table) try {
    return traceReceivers(Globals, tree, table, kLongestPath);
} catch (const std::bad_alloc&) {
    fail(Globals, text::kNoMemory, "pathsToLeafs");
    return KESTO_SETUP_FAILURE;
}
