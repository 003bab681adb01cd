// The component tree: each component as a node with at most one successor per output port, and the ways that lead
// downstream from a node. Built for one run when sources are traced; the tables are the process's own.
#ifndef KESTO_BINARYTREE_H
#define KESTO_BINARYTREE_H

#include <cstdint>
#include <vector>

#include "AUEglobals.h"

struct Node {
    std::int32_t compId;
    std::int32_t techId;
    Node* next1 = nullptr;  // reached through output port 1
    Node* next2 = nullptr;
};

// One way downstream, from the start node to a leaf or to where it comes round.
struct PathToLeaf {
    struct Stop {
        std::int32_t compId;
        std::int32_t port;  // output port of the stop before, through which this one is reached; 1 at the start
    };
    std::vector<Stop> stops;
};

// Makes the nodes of all connected components. Of two connections on one output port the later one stands. A sender's
// port other than 1 and 2 violates an invariant. May throw std::bad_alloc.
void BinaryTreeBuild(const ConnectionRow* Net_Conn, const ComponentRow* Net_Compnt, std::int32_t nConns,
                     std::int32_t nComps);

// The node of a component; null when it takes part in no connection.
Node* BinaryTreeFetchNode(std::int32_t compId);

// All ways from a node, port 1 before port 2, valid until the next call. May throw std::bad_alloc.
const std::vector<PathToLeaf>& PathsBuild(Node* startNode);
void PathsKill();

void BinaryTreeKill();

#endif
