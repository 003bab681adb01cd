// Amounts that flow from node to node, and nodes taken out of it.
#pragma once

#include <cstddef>
#include <map>
#include <vector>

namespace kesto {

class FlowGraph {
  public:
    explicit FlowGraph(std::size_t nodes) : out_(nodes), in_(nodes) {}

    // An amount below 0 flows back.
    void add(int from, int to, double amount);

    // What reaches the node goes on to where it leads, in the shares of what leaves it. What reaches a node that
    // nothing leaves stays there.
    void passThrough(int node);

    // Of several nodes: those with few neighbours first, so that few links arise.
    void passThroughAll(const std::vector<int>& nodes);

    const std::map<int, double>& out(int node) const { return out_[static_cast<std::size_t>(node)]; }
    const std::map<int, double>& in(int node) const { return in_[static_cast<std::size_t>(node)]; }
    double sumIn(int node) const;
    double sumOut(int node) const;
    std::size_t size() const { return out_.size(); }

    void remove(int from, int to);

  private:
    std::vector<std::map<int, double>> out_, in_;
};

}  // namespace kesto
