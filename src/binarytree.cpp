#include "binarytree.h"

#include <algorithm>
#include <utility>

#include "components/lookup.h"
#include "components/type_codes.h"
#include "errors.h"

namespace {

constexpr std::int32_t kUnknownType = 0;  // of an id without a row

// Two parallel tables, by ascending id.
struct CompIdNodeLink {
    std::vector<std::int32_t> compIds;
    std::vector<Node> nodes;
};

CompIdNodeLink compIdNodeLink;

// Rows by the id that each carries, as the float that it is; the first row of an id stands before the others.
using RowsById = std::vector<std::pair<float, std::int32_t>>;

RowsById sortRows(const ComponentRow* Net_Compnt, std::int32_t nComps) {
    RowsById rows;
    for (std::int32_t i = 0; i < nComps; ++i) {
        // Not a number equals no id and would spoil the order.
        if (Net_Compnt[i].id == Net_Compnt[i].id) rows.emplace_back(Net_Compnt[i].id, i);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

Node newNode(std::int32_t compId, const ComponentRow* Net_Compnt, const RowsById& rows) {
    const auto id = static_cast<float>(compId);
    const auto row = std::lower_bound(rows.begin(), rows.end(), std::pair(id, std::int32_t{0}));
    const bool isKnown = row != rows.end() && row->first == id;
    return {compId, isKnown ? nint(Net_Compnt[row->second].techid) : kUnknownType, isKnown};
}

// Whether ways end at the node although it sends on: all but those that start there are dropped.
bool endsWays(const Node& node) {
    return node.techId == code::kServiceReservoir && !node.isLast();
}

}  // namespace

void BinaryTreeBuild(const ConnectionRow* Net_Conn, const ComponentRow* Net_Compnt, std::int32_t nConns,
                     std::int32_t nComps) {
    std::vector<std::int32_t>& compIds = compIdNodeLink.compIds;
    for (std::int32_t i = 0; i < nConns; ++i)
        compIds.insert(compIds.end(), {Net_Conn[i].senderId, Net_Conn[i].receiverId});
    std::sort(compIds.begin(), compIds.end());
    compIds.erase(std::unique(compIds.begin(), compIds.end()), compIds.end());

    const RowsById rows = sortRows(Net_Compnt, nComps);
    compIdNodeLink.nodes.reserve(compIds.size());
    for (const std::int32_t compId : compIds)
        compIdNodeLink.nodes.push_back(newNode(compId, Net_Compnt, rows));

    for (std::int32_t i = 0; i < nConns; ++i) {
        Node* const sender = BinaryTreeFetchNode(Net_Conn[i].senderId);
        invariant(sender != nullptr, "node!=NULL", "binarytree", 41);
        const std::int32_t port = Net_Conn[i].senderPort;
        invariant(port == 1 || port == 2, "1==0", "binarytree", 125);
        (port == 1 ? sender->next1 : sender->next2) = BinaryTreeFetchNode(Net_Conn[i].receiverId);
    }
}

Node* BinaryTreeFetchNode(std::int32_t compId) {
    const std::vector<std::int32_t>& compIds = compIdNodeLink.compIds;
    const auto place = std::lower_bound(compIds.begin(), compIds.end(), compId);
    if (place == compIds.end() || *place != compId) return nullptr;
    return &compIdNodeLink.nodes[static_cast<std::size_t>(place - compIds.begin())];
}

const std::vector<Node>& BinaryTreeNodes() {
    return compIdNodeLink.nodes;
}

void BinaryTreeKill() {
    compIdNodeLink = CompIdNodeLink();
}

// Why ways may be left out, and what that saves.
//
// Where a way can lead from a node depends on the node, on the number of stops before it and on the start, not on which
// stops those are: another store that sends on drops every way, and the store that the search started from ends every
// way. So a node has a fewest number of stops that a way from it needs to an end, and a fewest number for a way on
// which something matters. Compared with the stops that are left, they tell whether there is such a way. Both only grow
// during a search, since what was dismissed stays so: what once is too many remains too many.
//
// While no stop of the way at hand matters, a successor is left out when none of the ways through it meets anything
// that matters: nothing would happen on them. While one does, the very next way has its effect wherever it leads, and
// only successors from which no way ends are left out. Hence the ways that are gone, and their order, are the same in
// effect as all.
//
// After its successors a node's needs are raised to what theirs say. Suppose that the search comes back from a node and
// no way through it had its effect at an earlier stop. Then each was searched to its end and all that mattered on it is
// dismissed; the needs say so, and with as many stops or more before it the node is not entered again. Each other visit
// lies on a way that dismissed something. So there are at most as many visits as nodes, times the lengths at which they
// are reached (one, but where ways of different lengths lead to a node), and stops on the ways that dismiss.

PathSearch::PathSearch(std::vector<bool> mattersAtFirst, std::int32_t longestWay)
    : longest_(longestWay), mattersAtFirst_(std::move(mattersAtFirst)), matters_(mattersAtFirst_) {
    const std::vector<Node>& nodes = BinaryTreeNodes();
    Senders senders;
    for (const Node& node : nodes) {
        if (endsWays(node)) continue;
        for (const Node* const next : {node.next1, node.next2}) {
            if (next) senders.emplace_back(indexOf(*next), indexOf(node));
        }
    }
    std::sort(senders.begin(), senders.end());
    needs_.resize(nodes.size(), {never(), never()});
    for (const Node& node : nodes) {
        // Which store a search will start from is open: each may be an end.
        if (node.isLast() || endsWays(node)) needs_[indexOf(node)].toEnd = 1;
    }
    spread(senders, &Need::toEnd);
    for (const Node& node : nodes) {
        if (matters(node)) needs_[indexOf(node)].toMatter = needs_[indexOf(node)].toEnd;
    }
    spread(senders, &Need::toMatter);
    needsAtFirst_ = needs_;
}

// Gives each node what it needs when its successors need what they have, nearest nodes first.
void PathSearch::spread(const Senders& senders, std::int32_t Need::*stops) {
    std::vector<std::vector<std::size_t>> byNeed(static_cast<std::size_t>(longest_) + 1);
    for (std::size_t i = 0; i < needs_.size(); ++i) {
        if (needs_[i].*stops <= longest_) byNeed[static_cast<std::size_t>(needs_[i].*stops)].push_back(i);
    }
    for (std::int32_t need = 1; need < longest_; ++need) {
        for (const std::size_t receiver : byNeed[static_cast<std::size_t>(need)]) {
            if (needs_[receiver].*stops < need) continue;
            auto edge = std::lower_bound(senders.begin(), senders.end(), std::pair(receiver, std::size_t{0}));
            for (; edge != senders.end() && edge->first == receiver; ++edge) {
                if (needs_[edge->second].*stops <= need + 1) continue;
                needs_[edge->second].*stops = need + 1;
                byNeed[static_cast<std::size_t>(need) + 1].push_back(edge->second);
            }
        }
    }
}

std::size_t PathSearch::indexOf(const Node& node) const {
    return static_cast<std::size_t>(&node - BinaryTreeNodes().data());
}

bool PathSearch::PathsBuild(const Node* startNode) {
    const bool goesOn = pathsExtract(*startNode, 1);
    stops_.clear();
    for (const Node* const node : changed_) {
        matters_[indexOf(*node)] = mattersAtFirst_[indexOf(*node)];
        needs_[indexOf(*node)] = needsAtFirst_[indexOf(*node)];
    }
    changed_.clear();
    return goesOn;
}

void PathSearch::dismiss(const Node& node) {
    if (!matters(node)) return;
    changed_.push_back(&node);
    matters_[indexOf(node)] = false;
}

bool PathSearch::pathsExtract(const Node& node, std::int32_t port) {
    stops_.push_back({&node, port});
    const bool goesOn = follow(node);
    stops_.pop_back();
    passed_ = std::max(std::min(passed_, stops_.size()), std::size_t{1});
    return goesOn;
}

bool PathSearch::follow(const Node& node) {
    const bool isStart = stops_.size() == 1;
    if (node.isLast() || (endsWays(node) && !isStart)) {
        const bool isWay = node.isLast() || &node == stops_.front().node;
        if (isWay && somethingMatters() && !found(stops_, passed_)) return false;
        raise(node, {isWay ? 1 : never(), isWay && matters(node) ? 1 : never()});
        return true;
    }
    if (node.next1 && isWorthwhile(*node.next1) && !pathsExtract(*node.next1, 1)) return false;
    if (node.next2 && isWorthwhile(*node.next2) && !pathsExtract(*node.next2, 2)) return false;
    raise(node, needThrough(node));
    return true;
}

// Whether the way at hand may go on to a node and have an effect.
bool PathSearch::isWorthwhile(const Node& next) {
    const Need& need = needs_[indexOf(next)];
    const std::int32_t stops = somethingMatters() ? need.toEnd : need.toMatter;
    return static_cast<std::int32_t>(stops_.size()) + stops <= longest_;
}

// Whether one of the stops of the way at hand matters; the first that does is the one at `passed_`.
bool PathSearch::somethingMatters() {
    while (passed_ < stops_.size() && !matters(*stops_[passed_].node))
        ++passed_;
    return passed_ < stops_.size();
}

PathSearch::Need PathSearch::needThrough(const Node& node) const {
    Need need{longest_, longest_};
    for (const Node* const next : {node.next1, node.next2}) {
        if (!next) continue;
        need.toEnd = std::min(need.toEnd, needs_[indexOf(*next)].toEnd);
        need.toMatter = std::min(need.toMatter, needs_[indexOf(*next)].toMatter);
    }
    return {need.toEnd + 1, matters(node) ? need.toEnd + 1 : need.toMatter + 1};
}

void PathSearch::raise(const Node& node, Need need) {
    Need& known = needs_[indexOf(node)];
    need = {std::max(need.toEnd, known.toEnd), std::max(need.toMatter, known.toMatter)};
    if (need == known) return;
    if (known == needsAtFirst_[indexOf(node)]) changed_.push_back(&node);
    known = need;
}
