#include "path_reduction.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <string>

#include "flow_graph.h"

namespace kesto {

namespace {

constexpr std::size_t kMost = 8;    // nodes of a kind
constexpr double kRounding = 1e-9;  // of all water: less is not shown
constexpr std::array<std::string_view, 5> kOthers{"other sources", "other stores", "other works", "other uses",
                                                  "other sinks"};

class Reduction {
  public:
    explicit Reduction(std::vector<PathNode> nodes) : nodes_(std::move(nodes)) {}

    // Components that are passed through get numbers after the nodes, and are then taken out.
    NetworkPaths take(const std::vector<PathEdge>& edges) {
        const auto fixed = static_cast<int>(nodes_.size());
        std::map<int, int> numbers;
        for (const PathEdge& edge : edges) {
            for (const int end : {edge.from, edge.to}) {
                if (end < 0) numbers.emplace(end, 0);
            }
        }
        std::vector<int> passed;
        for (auto& [component, number] : numbers) {
            number = fixed + static_cast<int>(passed.size());
            passed.push_back(number);
        }
        FlowGraph graph(at(fixed) + passed.size());
        const auto numberOf = [&](int end) { return end < 0 ? numbers.at(end) : end; };
        for (const PathEdge& edge : edges) {
            graph.add(numberOf(edge.from), numberOf(edge.to), edge.litres);
        }
        graph.passThroughAll(passed);
        return fewest(graph, fixed);
    }

  private:
    NetworkPaths fewest(const FlowGraph& graph, int fixed) {
        std::vector<std::size_t> to(at(fixed));
        std::iota(to.begin(), to.end(), 0U);
        for (std::size_t kind = 0; kind < kOthers.size(); ++kind) {
            mergeSmall(graph, static_cast<PathKind>(kind), to);
        }
        std::map<std::pair<std::size_t, std::size_t>, double> links;
        double all = 0;
        for (int from = 0; from < fixed; ++from) {
            for (const auto& [receiver, litres] : graph.out(from)) {
                if (receiver >= fixed || to[at(from)] == to[at(receiver)]) continue;
                links[{to[at(from)], to[at(receiver)]}] += litres;
                all += litres;
            }
        }
        NetworkPaths paths;
        std::map<std::size_t, std::size_t> numbers;
        const auto numberOf = [&](std::size_t node) {
            const auto [known, isNew] = numbers.emplace(node, paths.nodes.size());
            if (isNew) paths.nodes.push_back(nodes_[node]);
            return known->second;
        };
        for (const auto& [ends, litres] : links) {
            if (litres > kRounding * all) paths.links.push_back({numberOf(ends.first), numberOf(ends.second), litres});
        }
        return paths;
    }

    // The largest of a kind stay, the others become one.
    void mergeSmall(const FlowGraph& graph, PathKind kind, std::vector<std::size_t>& to) {
        std::vector<std::size_t> members;
        for (std::size_t i = 0; i < to.size(); ++i) {
            if (nodes_[i].kind == kind) members.push_back(i);
        }
        if (members.size() <= kMost) return;
        const auto sizeOf = [&](std::size_t i) {
            return std::max(graph.sumIn(static_cast<int>(i)), graph.sumOut(static_cast<int>(i)));
        };
        std::stable_sort(members.begin(), members.end(),
                         [&](std::size_t a, std::size_t b) { return sizeOf(a) > sizeOf(b); });
        PathNode other{std::string(kOthers[static_cast<std::size_t>(kind)]), kind, 0, 0};
        for (std::size_t i = kMost - 1; i < members.size(); ++i) {
            other.components += nodes_[members[i]].components;
            to[members[i]] = nodes_.size();
        }
        nodes_.push_back(std::move(other));
    }

    std::vector<PathNode> nodes_;
};

}  // namespace

NetworkPaths reduced(std::vector<PathNode> nodes, const std::vector<PathEdge>& edges) {
    return Reduction(std::move(nodes)).take(edges);
}

}  // namespace kesto
