// The component tree: each component as a node with at most one successor per output port, and the search along the
// ways that lead downstream from a node. Built for one run when sources are traced; the tables are the process's own.
#ifndef KESTO_BINARYTREE_H
#define KESTO_BINARYTREE_H

#include <cstdint>
#include <utility>
#include <vector>

#include "AUEglobals.h"

struct Node {
    std::int32_t compId;
    std::int32_t techId;    // 0 without a row
    bool isKnown;           // whether a row carries the id
    Node* next1 = nullptr;  // reached through output port 1
    Node* next2 = nullptr;

    bool isLast() const { return !next1 && !next2; }
};

// Makes the nodes of all connected components. Of two connections on one output port the later one stands. A sender's
// port other than 1 and 2 violates an invariant. May throw std::bad_alloc.
void BinaryTreeBuild(const ConnectionRow* Net_Conn, const ComponentRow* Net_Compnt, std::int32_t nConns,
                     std::int32_t nComps);

// The node of a component; null when it takes part in no connection.
Node* BinaryTreeFetchNode(std::int32_t compId);

// All nodes, by ascending id.
const std::vector<Node>& BinaryTreeNodes();

void BinaryTreeKill();

// One stop of a way. A way has at most kLongestWay of them.
struct Stop {
    const Node* node;
    std::int32_t port;  // output port of the stop before, through which this one is reached; 1 at the start
};
inline constexpr std::int32_t kLongestWay = 1000;

// Goes the ways downstream from a node one by one, port 1 before port 2, each to a node that sends to nothing or to
// where it comes round to a refilled store (33) that it started from; a way that meets another such store which sends
// on, or has too many stops, is dropped.
//
// Ways on which nothing matters are left out, so that a search takes time for the nodes that it passes and for what it
// finds, not for the number of ways, which doubles wherever two ways part and meet again.
class PathSearch {
  public:
    // `mattersAtFirst` tells of each node of the tree whether it matters on a way. May throw std::bad_alloc.
    explicit PathSearch(std::vector<bool> mattersAtFirst, std::int32_t longestWay = kLongestWay);
    virtual ~PathSearch() = default;
    PathSearch(const PathSearch&) = delete;
    PathSearch& operator=(const PathSearch&) = delete;

    // All ways from a node on which something matters. False when `found` ended the search. A search may follow
    // another; what the one dismissed matters to the next again. May throw std::bad_alloc.
    bool PathsBuild(const Node* startNode);

  protected:
    // Called for a way: `at` is the first stop behind the start that matters. False ends the search.
    virtual bool found(const std::vector<Stop>& way, std::size_t at) = 0;

    // From now on the node matters no more in this search.
    void dismiss(const Node& node);

  private:
    // The fewest stops, this node's included, of a way from it to its end, and of one on which something matters; more
    // than any way has when there is none. Lower bounds, which the search raises as it learns.
    struct Need {
        std::int32_t toEnd;
        std::int32_t toMatter;
        bool operator==(const Need&) const = default;
    };

    using Senders = std::vector<std::pair<std::size_t, std::size_t>>;  // receiver and sender, sorted

    std::int32_t never() const { return longest_ + 1; }
    std::size_t indexOf(const Node& node) const;
    bool matters(const Node& node) const { return matters_[indexOf(node)]; }
    void spread(const Senders& senders, std::int32_t Need::*stops);
    bool pathsExtract(const Node& node, std::int32_t port);
    bool follow(const Node& node);
    bool isWorthwhile(const Node& next);
    bool somethingMatters();
    Need needThrough(const Node& node) const;
    void raise(const Node& node, Need need);

    const std::int32_t longest_;
    const std::vector<bool> mattersAtFirst_;
    std::vector<bool> matters_;
    std::vector<Need> needsAtFirst_;
    std::vector<Need> needs_;
    std::vector<const Node*> changed_;  // those for which matters_ or needs_ is not as at first
    std::vector<Stop> stops_;
    std::size_t passed_ = 1;  // so many stops of the way do not matter; the start never does
};

#endif
