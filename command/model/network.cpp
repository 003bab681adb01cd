#include "network.h"

#include <array>
#include <map>
#include <queue>

namespace kesto {

Network::Network(const Model& model)
    : model_(model), outgoing_(model.components.size()), incoming_(model.components.size()) {
    for (std::size_t i = 0; i < model.connections.size(); ++i) {
        outgoing_[at(model.connections[i].from)].push_back(static_cast<int>(i));
        incoming_[at(model.connections[i].to)].push_back(static_cast<int>(i));
    }
}

std::vector<int> Network::inputs(int component) const {
    std::map<int, int> last;
    for (const int connection : incoming(component)) {
        last[model_.connections[at(connection)].from] = connection;
    }
    std::vector<int> result;
    for (const auto& [sender, connection] : last) {
        result.push_back(connection);
    }
    return result;
}

// The engine places what waits for no sender, then opens loops at delays, in table order. Which components it can place
// does not depend on the order of its passes, so a work list does.
void Network::place(std::vector<bool>& placed, std::vector<int>& waiting, int& silent) const {
    const std::size_t n = model_.components.size();
    std::vector<int> ready;
    for (std::size_t i = n; i-- > 0;) {
        waiting[i] = static_cast<int>(incoming_[i].size());
        if (waiting[i] == 0) ready.push_back(static_cast<int>(i));
    }
    std::size_t nextDelay = 0;
    const auto release = [&](int connection) {
        const int to = model_.connections[at(connection)].to;
        if (--waiting[at(to)] == 0 && !placed[at(to)]) ready.push_back(to);
    };
    for (;;) {
        while (!ready.empty()) {
            const int component = ready.back();
            ready.pop_back();
            if (placed[at(component)]) continue;
            placed[at(component)] = true;
            for (const int connection : outgoing(component)) {
                release(connection);
            }
        }
        while (nextDelay < n && (placed[nextDelay] || model_.components[nextDelay].code != code::kDelay))
            ++nextDelay;
        if (nextDelay == n) return;
        if (outgoing_[nextDelay].empty()) {
            silent = static_cast<int>(nextDelay);
            return;
        }
        placed[nextDelay] = true;
        release(outgoing_[nextDelay].front());  // DELIBERATE: the engine frees only the first connection of a delay
    }
}

// The engine goes through the table again and again, and places what waits for no sender any more: a component whose
// last sender was placed later in the table waits for the next pass. When a pass places nothing, the first delay does
// not wait any longer, and the next pass begins.
std::vector<int> Network::order() const {
    using Turn = std::pair<std::size_t, int>;  // pass, component
    const std::size_t n = model_.components.size();
    std::vector<std::size_t> waiting(n);
    std::vector<bool> placed(n, false);
    std::priority_queue<Turn, std::vector<Turn>, std::greater<>> turns;
    for (std::size_t i = 0; i < n; ++i) {
        waiting[i] = incoming_[i].size();
        if (waiting[i] == 0) turns.emplace(0, static_cast<int>(i));
    }
    std::vector<int> order;
    std::size_t pass = 0, nextDelay = 0;
    const auto release = [&](int connection, int from) {
        const int to = model_.connections[at(connection)].to;
        if (--waiting[at(to)] == 0 && !placed[at(to)]) turns.emplace(to > from ? pass : pass + 1, to);
    };
    const auto put = [&](int component) {
        placed[at(component)] = true;
        order.push_back(component);
    };
    for (;;) {
        while (!turns.empty()) {
            const int component = turns.top().second;
            pass = turns.top().first;
            turns.pop();
            put(component);
            for (const int connection : outgoing(component)) {
                release(connection, component);
            }
        }
        while (nextDelay < n && (placed[nextDelay] || model_.components[nextDelay].code != code::kDelay))
            ++nextDelay;
        if (nextDelay == n || outgoing_[nextDelay].empty()) return order;
        ++pass;
        put(static_cast<int>(nextDelay));
        release(outgoing_[nextDelay].front(), kNone);
    }
}

std::vector<int> Network::unplaced() const {
    std::vector<bool> placed(model_.components.size(), false);
    std::vector<int> waiting(model_.components.size());
    int silent = -1;
    place(placed, waiting, silent);
    std::vector<int> result;
    for (std::size_t i = 0; i < placed.size(); ++i) {
        if (!placed[i]) result.push_back(static_cast<int>(i));
    }
    return result;
}

int Network::silentDelay() const {
    std::vector<bool> placed(model_.components.size(), false);
    std::vector<int> waiting(model_.components.size());
    int silent = -1;
    place(placed, waiting, silent);
    return silent;
}

std::vector<bool> Network::tracedFromReceivers() const {
    std::vector<bool> traced(model_.components.size(), false);
    std::vector<int> stack;
    for (std::size_t i = 0; i < traced.size(); ++i) {
        if (isReceivingUnit(model_.components[i].code)) stack.push_back(static_cast<int>(i));
    }
    while (!stack.empty()) {
        const int component = stack.back();
        stack.pop_back();
        if (traced[at(component)]) continue;
        traced[at(component)] = true;
        for (const int connection : outgoing(component)) {
            stack.push_back(model_.connections[at(connection)].to);
        }
    }
    return traced;
}

double Network::tracingWorkOf(int receiver, std::vector<int>& stamps, double& visits) const {
    constexpr int kLongestPath = 1000;
    struct Stop {
        int component, length;
    };
    const int unit = model_.components[at(receiver)].code;
    double work = 0;
    std::vector<Stop> stops{{receiver, 1}};
    stamps[at(receiver)] = receiver;
    for (std::size_t i = 0; i < stops.size(); ++i) {
        const auto [component, length] = stops[i];
        const int code = model_.components[at(component)].code;
        if (i > 0 && (isSourceOf(code, unit) || code == code::kSplitter)) ++work;
        if (length == kLongestPath || (i > 0 && code == code::kServiceReservoir)) continue;
        // Of each output the engine follows the connection listed last.
        std::array<int, 2> next{kNone, kNone};
        for (const int connection : outgoing(component)) {
            const Connection& one = model_.connections[at(connection)];
            next[at(one.fromPort) - 1] = one.to;
        }
        for (const int to : next) {
            if (to == kNone || stamps[at(to)] == receiver) continue;
            stamps[at(to)] = receiver;
            stops.push_back({to, length + 1});
        }
    }
    visits += static_cast<double>(stops.size());
    return work;
}

double Network::tracingWork(double enough) const {
    constexpr double kMostVisits = 1e7;  // a tenth of a second
    std::vector<int> stamps(model_.components.size(), kNone);
    double work = 0, visits = 0;
    for (std::size_t i = 0; i < stamps.size() && work <= enough && visits < kMostVisits; ++i) {
        if (isReceivingUnit(model_.components[i].code)) work += tracingWorkOf(static_cast<int>(i), stamps, visits);
    }
    return work;
}

}  // namespace kesto
