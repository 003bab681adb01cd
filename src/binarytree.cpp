#include "binarytree.h"

#include <algorithm>
#include <utility>

#include "components/lookup.h"
#include "components/type_codes.h"
#include "errors.h"

namespace {

constexpr std::int32_t kUnknownType = 0;  // of an id without a row

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

// The same node as BinaryTreeFetchNode, of a tree that may be a constant.
template <typename Tree>
auto* fetch(Tree& tree, std::int32_t compId) {
    const auto place = std::lower_bound(tree.compIds.begin(), tree.compIds.end(), compId);
    const bool isThere = place != tree.compIds.end() && *place == compId;
    return isThere ? &tree.nodes[static_cast<std::size_t>(place - tree.compIds.begin())] : nullptr;
}

// Whether paths end at the node although it sends on: all but those that start there are dropped.
bool endsPaths(const Node& node) {
    return node.techId == code::kServiceReservoir && !node.isLast();
}

}  // namespace

BinaryTree BinaryTreeBuild(const ConnectionRow* Net_Conn, const ComponentRow* Net_Compnt, std::int32_t nConns,
                           std::int32_t nComps) {
    BinaryTree tree;
    std::vector<std::int32_t>& compIds = tree.compIds;
    for (std::int32_t i = 0; i < nConns; ++i)
        compIds.insert(compIds.end(), {Net_Conn[i].senderId, Net_Conn[i].receiverId});
    std::sort(compIds.begin(), compIds.end());
    compIds.erase(std::unique(compIds.begin(), compIds.end()), compIds.end());

    const RowsById rows = sortRows(Net_Compnt, nComps);
    tree.nodes.reserve(compIds.size());
    for (const std::int32_t compId : compIds)
        tree.nodes.push_back(newNode(compId, Net_Compnt, rows));

    for (std::int32_t i = 0; i < nConns; ++i) {
        Node* const sender = fetch(tree, Net_Conn[i].senderId);
        invariant(sender != nullptr, "node!=NULL", "binarytree", 41);
        const std::int32_t port = Net_Conn[i].senderPort;
        invariant(port == 1 || port == 2, "1==0", "binarytree", 125);
        (port == 1 ? sender->next1 : sender->next2) = fetch(tree, Net_Conn[i].receiverId);
    }
    return tree;
}

const Node* BinaryTreeFetchNode(const BinaryTree& tree, std::int32_t compId) {
    return fetch(tree, compId);
}

// Why paths may be left out, and what that saves.
//
// Where a path can lead from a node depends on the node, on the number of stops before it and on the start, not on
// which stops those are: another service reservoir that sends on drops every path, and the one that the search started
// from ends every path. So there is a least number of stops from a node to an end, and a least number for a path on
// which something matters. Compared with the stops that are left, they show whether there is such a path. Both only
// grow during a search, since what was dismissed stays dismissed: a number that is too large remains too large.
//
// While no stop of the current path matters, a successor is left out when none of the paths through it meets anything
// that matters: nothing would happen on them. While one does, the very next path has its effect wherever it leads, and
// only successors from which no path ends are left out. Hence the paths that are followed have, in their order, the
// same effect as all paths.
//
// After its successors a node's needs are raised to what theirs say. Suppose that the search comes back from a node and
// no path through it had its effect at an earlier stop. Then each was searched to its end and all that mattered on it
// is dismissed; the needs say so, and with as many stops or more before it the node is not entered again. Each other
// visit lies on a path that dismissed something. So there are at most as many visits as nodes, times the lengths at
// which they are reached (one, unless paths of different lengths lead to a node), plus the stops on the paths that
// dismiss.

PathSearch::PathSearch(const BinaryTree& tree, std::vector<bool> mattersAtFirst, std::int32_t longestPath)
    : tree_(tree), longest_(longestPath), mattersAtFirst_(std::move(mattersAtFirst)), matters_(mattersAtFirst_) {
    const std::vector<Node>& nodes = tree.nodes;
    Senders senders;
    for (const Node& node : nodes) {
        if (endsPaths(node)) continue;
        for (const Node* const next : {node.next1, node.next2}) {
            if (next) senders.emplace_back(indexOf(*next), indexOf(node));
        }
    }
    std::sort(senders.begin(), senders.end());
    needs_.resize(nodes.size(), {never(), never()});
    for (const Node& node : nodes) {
        // A search may start from any service reservoir: each may be an end.
        if (node.isLast() || endsPaths(node)) needs_[indexOf(node)].toEnd = 1;
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
    return static_cast<std::size_t>(&node - tree_.nodes.data());
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
    if (node.isLast() || (endsPaths(node) && !isStart)) {
        const bool isPath = node.isLast() || &node == stops_.front().node;
        if (isPath && somethingMatters() && !found(stops_, passed_)) return false;
        raise(node, {isPath ? 1 : never(), isPath && matters(node) ? 1 : never()});
        return true;
    }
    if (node.next1 && canStillMatter(*node.next1) && !pathsExtract(*node.next1, 1)) return false;
    if (node.next2 && canStillMatter(*node.next2) && !pathsExtract(*node.next2, 2)) return false;
    raise(node, needThrough(node));
    return true;
}

// Whether the current path may go on to a node and have an effect.
bool PathSearch::canStillMatter(const Node& next) {
    const Need& need = needs_[indexOf(next)];
    const std::int32_t stops = somethingMatters() ? need.toEnd : need.toMatter;
    return static_cast<std::int32_t>(stops_.size()) + stops <= longest_;
}

// Whether one of the stops of the current path matters; the first that does is the one at `passed_`.
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
