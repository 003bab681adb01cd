#include "path_loops.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kesto {

namespace {

// A loop as links one after the other; empty: there is none.
std::vector<std::size_t> loopIn(const NetworkPaths& paths) {
    enum class State { fresh, open, done };
    std::vector<State> states(paths.nodes.size(), State::fresh);
    std::vector<std::size_t> path;  // links from a source on
    std::vector<std::size_t> loop;
    const auto visit = [&](const auto& self, std::size_t node) -> bool {
        states[node] = State::open;
        for (std::size_t i = 0; i < paths.links.size(); ++i) {
            const PathLink& link = paths.links[i];
            if (link.from != node || states[link.to] == State::done) continue;
            path.push_back(i);
            if (states[link.to] == State::open) {
                const auto begin = std::find_if(path.begin(), path.end(),
                                                [&](std::size_t one) { return paths.links[one].from == link.to; });
                loop.assign(begin, path.end());
                return true;
            }
            if (self(self, link.to)) return true;
            path.pop_back();
        }
        states[node] = State::done;
        return false;
    };
    for (std::size_t node = 0; node < paths.nodes.size(); ++node) {
        if (states[node] == State::fresh && visit(visit, node)) break;
    }
    return loop;
}

}  // namespace

void cutLoops(NetworkPaths& paths) {
    std::size_t ends = paths.nodes.size(), begins = ends;
    for (std::vector<std::size_t> loop = loopIn(paths); !loop.empty(); loop = loopIn(paths)) {
        const auto isBetter = [&](std::size_t a, std::size_t b) {
            const auto rank = [&](std::size_t link) {
                return std::pair(paths.nodes[paths.links[link].from].kind != PathKind::use, paths.links[link].litres);
            };
            return rank(a) < rank(b);
        };
        const std::size_t cut = *std::min_element(loop.begin(), loop.end(), isBetter);
        if (begins == ends) {
            ends = paths.nodes.size();
            begins = ends + 1;
            paths.nodes.push_back({"Used again", PathKind::sink, 0, 0});
            paths.nodes.push_back({"Reused water", PathKind::source, 0, 0});
        }
        const PathLink link = paths.links[cut];
        paths.links[cut].to = ends;
        paths.links.push_back({begins, link.to, link.litres});
    }
}

}  // namespace kesto
