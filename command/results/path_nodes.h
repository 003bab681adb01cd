// Which components stand for one node of a run's paths, and under which label.
#pragma once

#include <vector>

#include "network_paths.h"

namespace kesto {

inline constexpr int kPassed = -1;  // a component that is no node, but passed through

// Of each component the index of its node, or kPassed; nodes have no litres yet.
struct ComponentNodes {
    std::vector<PathNode> nodes;
    std::vector<int> of;
};

// So few nodes of a kind that each can be read: components, else groups, else types.
ComponentNodes nodesOf(const Recorded& recorded, const WaterPaths& paths);

// "impervious surfaces"
std::string pluralOf(const Type& type);

}  // namespace kesto
