// The calculation sequence.
//
// In meaning: passes over the components in table order. A pass places every component that waits for no connection any
// more, and placing a component removes the connections that it sends, at once: a component further down the table can
// be placed in the same pass, one further up waits for the next. When a pass places nothing, the first delay (51) in
// the table that is not yet placed is placed all the same, and the first connection that it sends is removed, that one
// alone; it will work on what its suppliers delivered in the previous step. Then passes go on.
//
// In fact: each id counts the connections that it still waits for, and two queues hold the components that the current
// and the next pass will place. That gives the same order in O((n + m) log n).

#include <functional>
#include <new>
#include <queue>

#include "components/lookup.h"
#include "components/type_codes.h"
#include "errors.h"
#include "simulation.h"

namespace {

constexpr std::int32_t kPlacedMark = -1;  // a component with this id counts as placed and is never numbered
constexpr int kMostPasses = 1000001;

// All that carries one id; two rows may share it.
struct Node {
    std::vector<std::int32_t> rows;
    std::vector<std::int32_t> receivers;  // of its connections, in table order
    std::size_t removed = 0;              // so many of these connections; the first ones, always
    std::int32_t waitsFor = 0;            // connections to it that are not yet removed
};

class Sequence {
  public:
    Sequence(const ConnectionRow* Net_Conn, std::int32_t nConns, const ComponentRow* Net_Compnt, std::int32_t nComps,
             std::vector<std::int32_t>& CompntId)
        : order_(CompntId) {
        rows_.reserve(static_cast<std::size_t>(nComps));
        nodes_.reserve(static_cast<std::size_t>(nComps));
        for (std::int32_t i = 0; i < nComps; ++i) {
            const std::int32_t id = nint(Net_Compnt[i].id);
            rows_.push_back({id, nint(Net_Compnt[i].techid), id == kPlacedMark});
            nodes_[id].rows.push_back(i);
        }
        for (std::int32_t i = 0; i < nConns; ++i) {
            nodes_[Net_Conn[i].senderId].receivers.push_back(Net_Conn[i].receiverId);
            ++nodes_[Net_Conn[i].receiverId].waitsFor;
        }
    }

    // False when some component cannot be placed.
    bool run() {
        order_.clear();
        for (std::int32_t i = 0; i < static_cast<std::int32_t>(rows_.size()); ++i) {
            if (nodes_[row(i).id].waitsFor == 0 && !row(i).placed) thisPass_.push(i);
        }
        do {
            if (!runPasses()) return false;
        } while (placeDelay());
        return order_.size() == rows_.size();
    }

  private:
    struct Row {
        std::int32_t id;
        std::int32_t type;
        bool placed;
    };

    Row& row(std::int32_t i) { return rows_[static_cast<std::size_t>(i)]; }

    bool runPasses() {
        for (int passes = 1; !thisPass_.empty(); ++passes) {
            while (!thisPass_.empty()) {
                const std::int32_t i = thisPass_.top();
                thisPass_.pop();
                place(i);
                Node& node = nodes_[row(i).id];
                while (node.removed < node.receivers.size())
                    removeFirst(node, i);
            }
            if (passes == kMostPasses) return false;
            thisPass_.swap(nextPass_);
        }
        return true;
    }

    void place(std::int32_t i) {
        row(i).placed = true;
        order_.push_back(row(i).id);
    }

    // Removes the first connection that a sender has left while a pass stands at row `at`.
    void removeFirst(Node& sender, std::int32_t at) {
        Node& receiver = nodes_[sender.receivers[sender.removed++]];
        if (--receiver.waitsFor > 0) return;
        for (const std::int32_t i : receiver.rows) {
            if (!row(i).placed) (i > at ? thisPass_ : nextPass_).push(i);
        }
    }

    // False when no delay is left to place.
    bool placeDelay() {
        const auto end = static_cast<std::int32_t>(rows_.size());
        while (firstDelay_ < end && (row(firstDelay_).placed || row(firstDelay_).type != code::kDelay))
            ++firstDelay_;
        if (firstDelay_ == end) return false;
        Node& delay = nodes_[row(firstDelay_).id];
        invariant(delay.removed < delay.receivers.size(), "ir!=NOTFOUND", "simulation", 601);
        place(firstDelay_);
        removeFirst(delay, kBeforeFirstRow);
        return true;
    }

    using Queue = std::priority_queue<std::int32_t, std::vector<std::int32_t>, std::greater<>>;
    static constexpr std::int32_t kBeforeFirstRow = -1;

    std::vector<std::int32_t>& order_;
    std::vector<Row> rows_;
    std::unordered_map<std::int32_t, Node> nodes_;
    Queue thisPass_;
    Queue nextPass_;
    std::int32_t firstDelay_ = 0;
};

}  // namespace

std::int32_t CalcSequence(const ConnectionRow* Net_Conn, std::int32_t nConns, const ComponentRow* Net_Compnt,
                          std::int32_t nComps, std::vector<std::int32_t>& CompntId) {
    if (nConns < 0) return KESTO_SETUP_FAILURE;
    try {
        return Sequence(Net_Conn, nConns, Net_Compnt, nComps, CompntId).run() ? KESTO_SUCCESS : KESTO_RUN_FAILURE;
    } catch (const std::bad_alloc&) {
        return KESTO_SETUP_FAILURE;
    }
}
