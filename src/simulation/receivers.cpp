// Receiving units (33, 37): where their water is traced to.
//
// For each way downstream of a unit: the first leaf on it that no earlier way of the same unit has taken, and the
// splitters (36) before that leaf with the output through which the way leaves each. Ways that find no leaf add nothing
// to what a unit receives and have no record.
//
// DELIBERATE: leafs are matched on decimal text. A type is a leaf type when its digits occur in the unit's list of leaf
// types ("37 33" also admits 3 and 7), and a leaf is taken when its digits occur inside an id taken before (5 after
// 15). Ids with the same number of digits keep clear of the second rule.

#include <algorithm>
#include <limits>
#include <new>
#include <optional>
#include <string>

#include "binarytree.h"
#include "components/lookup.h"
#include "errors.h"
#include "simulation.h"

namespace {

constexpr std::int32_t kRefilledStore = 33;
constexpr std::int32_t kThroughput = 37;
constexpr std::int32_t kSplitter = 36;

bool isLeaf(const Node& node, const std::string& leafTypes) {
    return node.isKnown && node.techId != kSplitter && leafTypes.find(std::to_string(node.techId)) != std::string::npos;
}

// What matters on a way: leafs, and what must not stand there, unknown components and splitters that send to nothing.
std::vector<bool> findWhatMatters(const std::string& leafTypes) {
    std::vector<bool> matters;
    for (const Node& node : BinaryTreeNodes()) {
        const bool isFault = !node.isKnown || (node.techId == kSplitter && node.isLast());
        matters.push_back(isFault || isLeaf(node, leafTypes));
    }
    return matters;
}

// All units of one type.
class LeafSearch : public PathSearch {
  public:
    LeafSearch(AUEglobals* Globals, const std::string& leafTypes, std::int32_t longestWay)
        : PathSearch(findWhatMatters(leafTypes), longestWay), Globals_(Globals), leafTypes_(leafTypes) {
        for (const Node& node : BinaryTreeNodes()) {
            if (isLeaf(node, leafTypes)) fewestDigits_ = std::min(fewestDigits_, std::to_string(node.compId).size());
        }
    }

    // Appends the entry of a unit to the table.
    std::int32_t getRcvLeafsSplitters(RCVTOLEAFS& table, std::int32_t receiverId) try {
        const Node* const node = BinaryTreeFetchNode(receiverId);
        if (!node) {
            fail(Globals_, text::kNoNode);
            return KESTO_RUN_FAILURE;
        }
        what_ = "RCVTOLEAFS";
        receiver_ = &table.emplace_back(Receiver{receiverId, {}});
        what_ = kWays;
        return PathsBuild(node) ? KESTO_SUCCESS : KESTO_RUN_FAILURE;
    } catch (const std::bad_alloc&) {
        fail(Globals_, text::kNoMemory, what_);
        return KESTO_SETUP_FAILURE;
    }

  private:
    static constexpr const char* kWays = "pathsToLeafs";

    bool found(const std::vector<Stop>& way, std::size_t at) override {
        const Node& leaf = *way[at].node;
        if (!leaf.isKnown) {
            fail(Globals_, text::kUnknownOnPath, leaf.compId);
            return false;
        }
        invariant(leaf.techId != kSplitter, "icomp+1<pathsToLeafs.PathToLeaf[ipath].pathlen", "simulation", 131);
        what_ = "RCVTOLEAF";
        RCVTOLEAF& record = receiver_->paths.emplace_back();
        record.leaf_id = leaf.compId;
        what_ = "RCVTOLEAF[ipath].Split_id";
        for (std::size_t icomp = 1; icomp < at; ++icomp) {
            if (way[icomp].node->techId != kSplitter) continue;
            record.splitters.push_back({way[icomp].node->compId, way[icomp + 1].port});
        }
        what_ = kWays;
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
        const Node* const node = BinaryTreeFetchNode(static_cast<std::int32_t>(id));
        if (node && isLeaf(*node, leafTypes_)) dismiss(*node);
    }

    AUEglobals* const Globals_;
    const std::string leafTypes_;
    std::size_t fewestDigits_ = 11;  // of any leaf's id, a sign among them
    const char* what_ = kWays;
    Receiver* receiver_ = nullptr;
};

std::int32_t traceReceivers(AUEglobals* Globals, RCVTOLEAFS& table, std::int32_t longestWay) {
    std::optional<LeafSearch> ofRefilledStores;
    std::optional<LeafSearch> ofThroughputs;
    std::int32_t status = KESTO_SUCCESS;
    for (std::int32_t i = 0; i < Globals->nComps && status == KESTO_SUCCESS; ++i) {
        // DELIBERATE: id and type are cut here, not rounded as everywhere else.
        const auto id = truncated(static_cast<double>(Globals->Net_Compnt[i].id));
        const auto type = truncated(static_cast<double>(Globals->Net_Compnt[i].techid));
        if (type == kRefilledStore) {
            if (!ofRefilledStores) ofRefilledStores.emplace(Globals, "37 33", longestWay);
            status = ofRefilledStores->getRcvLeafsSplitters(table, id);
        } else if (type == kThroughput) {
            if (!ofThroughputs) ofThroughputs.emplace(Globals, "39 38", longestWay);
            status = ofThroughputs->getRcvLeafsSplitters(table, id);
        }
    }
    return status;
}

}  // namespace

std::int32_t getReceiversLeafsSplitters(AUEglobals* Globals, RCVTOLEAFS& table) try {
    return traceReceivers(Globals, table, kLongestWay);
} catch (const std::bad_alloc&) {
    fail(Globals, text::kNoMemory, "pathsToLeafs");
    return KESTO_SETUP_FAILURE;
}
