// Where water went, component by component, as paths between few nodes.
#pragma once

#include <vector>

#include "network_paths.h"

namespace kesto {

struct PathEdge {
    int from, to;  // nodes; below 0: components, from -1 down, that are passed through
    double litres;
};

// Between the nodes alone: components are taken out, and of each kind of nodes the smallest become one.
NetworkPaths reduced(std::vector<PathNode> nodes, const std::vector<PathEdge>& edges);

}  // namespace kesto
