// Where the water of a run comes from and goes, in so few nodes that a person sees them all: sources, stores, works,
// uses and sinks. Junctions, links and surfaces are passed through: what leaves them is mixed of all that reaches them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "account.h"

namespace kesto {

enum class PathKind : std::uint8_t { source, store, works, use, sink };
std::string_view toText(PathKind kind);

struct PathNode {
    std::string label;
    PathKind kind;
    double litres = 0;   // that pass it in the run
    int components = 0;  // that it stands for
};

struct PathLink {
    std::size_t from, to;  // nodes
    double litres;
};

// Without loops: water that comes back to where it was goes to a sink "reused" and comes from a source of that name.
struct NetworkPaths {
    std::vector<PathNode> nodes;
    std::vector<PathLink> links;
};

// Empty where a figure is no number. Where water within the network was not recorded, one node stands for all of it.
NetworkPaths pathsOf(const Recorded& recorded, const ComponentSums& sums, const WaterPaths& paths,
                     const Account& account);

}  // namespace kesto
