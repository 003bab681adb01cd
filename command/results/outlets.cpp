#include "outlets.h"

#include <algorithm>

namespace kesto {

Outlets::Outlets(const NetworkView& network)
    : network_(network), outlets_(static_cast<std::size_t>(network.components())) {
    for (int to = 0; to < network.components(); ++to) {
        const bool isLogger = network.component(to).code == code::kLogger;
        for (const int index : network.inputs(to)) {
            const Connection& connection = network.connection(index);
            if (connection.fromPort < 1 || connection.fromPort > 2) continue;
            Outlet& outlet = outlets_[at(connection.from)][at(connection.fromPort) - 1];
            if (!isLogger) {
                outlet.connections.push_back(index);
            } else if (outlet.logger < 0) {
                outlet.logger = to;
            }
        }
    }
    for (int i = 0; i < network.components(); ++i) {
        settle(i);
    }
}

void Outlets::settle(int component) {
    const Type& type = network_.type(component);
    auto& [first, second] = outlets_[at(component)];
    first.counts = !type.out.empty();
    second.counts = type.out.size() > 1;
    if (type.balance.wiring.secondIsReport && second.connections.empty()) second.counts = false;
    if (!type.balance.wiring.copies) return;
    if (second.connections.empty()) {
        second.counts = false;
    } else if (first.connections.empty()) {
        first.counts = false;
    }
}

bool Outlets::asks(int component, int port) const {
    const std::vector<int>& connections = of(component, port).connections;
    return std::any_of(connections.begin(), connections.end(), [&](int index) {
        return network_.component(network_.connection(index).to).code != code::kWaterBody;
    });
}

int Outlets::copies(int component) const {
    const auto& [first, second] = outlets_[at(component)];
    return (first.counts ? 1 : 0) + (second.counts ? 1 : 0);
}

}  // namespace kesto
