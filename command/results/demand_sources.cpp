#include "demand_sources.h"

namespace kesto {

bool DemandSources::isSource(int component) const {
    return recorded_.component(component).code == code::kDemandSource && sums_.isBalanced(component);
}

bool DemandSources::passesDemand(int component) const {
    const Type& type = recorded_.type(component);
    const bool isPlain = type.balance.terms.empty() || recorded_.component(component).code == code::kMultiplier;
    return isPlain && !type.in.empty() && recorded_.carriers().of(component) == Carries::demand &&
           sums_.isBalanced(component);
}

// Connections by which a component is asked for something, with how much.
std::vector<std::pair<const Connection*, double>> DemandSources::askersOf(int component) const {
    std::vector<std::pair<const Connection*, double>> askers;
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        const double litres = totalOf(recorded_, connection.from, connection.fromPort, multiplicity_.into(component));
        if (litres != 0) askers.emplace_back(&connection, litres);
    }
    return askers;
}

// All that a demand comes from, by way of whom, each with how many of them it asks. Nothing where others ask for some
// of it.
std::optional<std::map<int, int>> DemandSources::upstreamOf(int sender) const {
    std::map<int, int> receivers{{sender, 0}};
    std::vector<int> found{sender};
    for (std::size_t i = 0; i < found.size(); ++i) {
        const int component = found[i];
        if (isSource(component)) continue;
        if (!passesDemand(component)) return std::nullopt;
        for (const auto& [connection, asked] : askersOf(component)) {
            if (&multiplicity_.of(connection->from) != &multiplicity_.into(component)) return std::nullopt;
            const auto [known, isNew] = receivers.try_emplace(connection->from, 0);
            ++known->second;
            if (isNew) found.push_back(connection->from);
        }
    }
    return receivers;
}

std::optional<DemandSources::Shares> DemandSources::of(int sender, double litres) const {
    auto receivers = upstreamOf(sender);
    if (!receivers) return std::nullopt;
    Shares sources;
    std::map<int, double> parts{{sender, litres}};
    std::vector<int> ready;
    if (receivers->at(sender) == 0) ready.push_back(sender);
    std::size_t passed = 0;
    for (; passed < ready.size(); ++passed) {
        const int component = ready[passed];
        const double part = parts[component];
        if (isSource(component)) {
            sources.emplace_back(component, part);
            continue;
        }
        const auto askers = askersOf(component);
        if (askers.empty() && part != 0) return std::nullopt;
        double all = 0;
        for (const auto& [connection, asked] : askers) {
            all += asked;
        }
        for (const auto& [connection, asked] : askers) {
            parts[connection->from] += part * asked / all;
            if (--receivers->at(connection->from) == 0) ready.push_back(connection->from);
        }
    }
    return passed == receivers->size() ? std::optional(sources) : std::nullopt;
}

}  // namespace kesto
