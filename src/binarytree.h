// The component tree: each component as a node with at most one successor per output port, and the search along the
// paths that lead downstream from a node.
#ifndef KESTO_BINARYTREE_H
#define KESTO_BINARYTREE_H

#include <cstdint>
#include <utility>
#include <vector>

#include "AUEglobals.h"

struct Node {
    std::int32_t compId;
    std::int32_t techId;          // 0 without a row
    bool isKnown;                 // whether a row carries the id
    const Node* next1 = nullptr;  // reached through output port 1
    const Node* next2 = nullptr;

    bool isLast() const { return !next1 && !next2; }
};

// Two parallel tables, by ascending id. Nodes point at each other: a tree may be moved, but not copied.
struct BinaryTree {
    std::vector<std::int32_t> compIds;
    std::vector<Node> nodes;

    BinaryTree() = default;
    BinaryTree(BinaryTree&&) = default;
    BinaryTree& operator=(BinaryTree&&) = default;
};

// The nodes of all connected components. Of two connections on one output port the later one stands. A sender's port
// other than 1 and 2 violates an invariant. May throw std::bad_alloc.
BinaryTree BinaryTreeBuild(const ConnectionRow* Net_Conn, const ComponentRow* Net_Compnt, std::int32_t nConns,
                           std::int32_t nComps);

// The node of a component; null when it takes part in no connection.
const Node* BinaryTreeFetchNode(const BinaryTree& tree, std::int32_t compId);

// One stop of a path. A path has at most kLongestPath of them.
struct Stop {
    const Node* node;
    std::int32_t port;  // output port of the stop before, through which this one is reached; 1 at the start
};
inline constexpr std::int32_t kLongestPath = 1000;

// Follows the paths downstream from a node one by one, port 1 before port 2. A path ends at a node that sends to
// nothing, or where it comes back to the service reservoir that it started from. A path that meets another service
// reservoir which sends on, or that has too many stops, is dropped.
//
// Paths on which nothing matters are left out. So the time of a search depends on the nodes that it passes and on what
// it finds, not on the number of paths, which doubles wherever two paths part and meet again.
class PathSearch {
  public:
    // `mattersAtFirst` says for each node of the tree whether it matters on a path. The tree must outlive the search.
    // May throw std::bad_alloc.
    PathSearch(const BinaryTree& tree, std::vector<bool> mattersAtFirst, std::int32_t longestPath = kLongestPath);
    virtual ~PathSearch() = default;
    PathSearch(const PathSearch&) = delete;
    PathSearch& operator=(const PathSearch&) = delete;

    // All paths from a node on which something matters. False when `found` ended the search. A search may follow
    // another; what the one dismissed matters to the next again. May throw std::bad_alloc.
    bool PathsBuild(const Node* startNode);

  protected:
    // Called for a path: `at` is the first stop behind the start that matters. False ends the search.
    virtual bool found(const std::vector<Stop>& path, std::size_t at) = 0;

    // From now on the node no longer matters in this search.
    void dismiss(const Node& node);

  private:
    // The fewest stops, this node included, of a path from it to an end, and of one on which something matters; without
    // such a path, more than any path has. Lower bounds, which the search raises as it learns.
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
    bool canStillMatter(const Node& next);
    bool somethingMatters();
    Need needThrough(const Node& node) const;
    void raise(const Node& node, Need need);

    const BinaryTree& tree_;
    const std::int32_t longest_;
    const std::vector<bool> mattersAtFirst_;
    std::vector<bool> matters_;
    std::vector<Need> needsAtFirst_;
    std::vector<Need> needs_;
    std::vector<const Node*> changed_;  // those for which matters_ or needs_ is not as at first
    std::vector<Stop> stops_;
    std::size_t passed_ = 1;  // so many stops of the path do not matter; the start never does
};

#endif
