#include "flow_graph.h"

#include <set>
#include <utility>

namespace kesto {

namespace {

std::size_t at(int node) {
    return static_cast<std::size_t>(node);
}

double sumOf(const std::map<int, double>& amounts) {
    double sum = 0;
    for (const auto& [node, amount] : amounts) {
        sum += amount;
    }
    return sum;
}

}  // namespace

void FlowGraph::add(int from, int to, double amount) {
    if (amount == 0) return;
    if (amount < 0) return add(to, from, -amount);
    out_[at(from)][to] += amount;
    in_[at(to)][from] += amount;
}

void FlowGraph::remove(int from, int to) {
    out_[at(from)].erase(to);
    in_[at(to)].erase(from);
}

double FlowGraph::sumIn(int node) const {
    return sumOf(in_[at(node)]);
}

double FlowGraph::sumOut(int node) const {
    return sumOf(out_[at(node)]);
}

void FlowGraph::passThrough(int node) {
    remove(node, node);
    const std::map<int, double> comes = in_[at(node)], goes = out_[at(node)];
    const double all = sumOf(goes);
    if (all == 0) return;
    for (const auto& [from, amount] : comes) {
        remove(from, node);
        for (const auto& [to, share] : goes) {
            add(from, to, amount * (share / all));
        }
    }
    for (const auto& [to, share] : goes) {
        remove(node, to);
    }
}

void FlowGraph::passThroughAll(const std::vector<int>& nodes) {
    const auto costOf = [&](int node) { return in_[at(node)].size() * out_[at(node)].size(); };
    std::set<std::pair<std::size_t, int>> queue;
    std::vector<std::size_t> cost(size());
    std::vector<bool> isWaiting(size(), false);
    for (const int node : nodes) {
        cost[at(node)] = costOf(node);
        isWaiting[at(node)] = true;
        queue.emplace(cost[at(node)], node);
    }
    while (!queue.empty()) {
        const int node = queue.begin()->second;
        queue.erase(queue.begin());
        isWaiting[at(node)] = false;
        std::vector<int> neighbours;
        for (const auto* list : {&in_[at(node)], &out_[at(node)]}) {
            for (const auto& [neighbour, amount] : *list) {
                if (isWaiting[at(neighbour)]) neighbours.push_back(neighbour);
            }
        }
        passThrough(node);
        for (const int neighbour : neighbours) {
            queue.erase({cost[at(neighbour)], neighbour});
            cost[at(neighbour)] = costOf(neighbour);
            queue.emplace(cost[at(neighbour)], neighbour);
        }
    }
}

}  // namespace kesto
