#include "carriers.h"

namespace kesto {

// A junction that water and demands reach passes on water.
Carriers::Carriers(const Model& model, const Network& network) : model_(model) {
    for (const Component& component : model.components) {
        carriers_.push_back(component.type->balance.carries);
    }
    Lists outgoing(model.components.size());
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        for (const int connection : network.inputs(static_cast<int>(i))) {
            outgoing[at(model.connections[at(connection)].from)].push_back(connection);
        }
    }
    spread(outgoing, Carries::water);
    spread(outgoing, Carries::demand);
}

void Carriers::spread(const Lists& outgoing, Carries carries) {
    std::vector<int> senders;
    for (std::size_t i = carriers_.size(); i-- > 0;) {
        senders.push_back(static_cast<int>(i));
    }
    while (!senders.empty()) {
        const int sender = senders.back();
        senders.pop_back();
        for (const int index : outgoing[at(sender)]) {
            const Connection& connection = model_.connections[at(index)];
            Carries& receiver = carriers_[at(connection.to)];
            if (receiver != Carries::same || ofOutput(sender, connection.fromPort) != carries) continue;
            receiver = carries;
            senders.push_back(connection.to);
        }
    }
}

Carries Carriers::ofOutput(int component, int port) const {
    const std::vector<Port>& ports = model_.components[at(component)].type->out;
    if (at(port) > ports.size()) return Carries::demand;
    const Carries carries = ports[at(port) - 1].carries;
    return carries == Carries::same ? of(component) : carries;
}

Carries Carriers::ofInput(int component, int port) const {
    const std::vector<Port>& ports = model_.components[at(component)].type->in;
    if (at(port) > ports.size()) return of(component);
    const Carries carries = ports[at(port) - 1].carries;
    return carries == Carries::same ? of(component) : carries;
}

}  // namespace kesto
