#include "origins.h"

#include <utility>

namespace kesto {

namespace {

// No type has more outputs.
constexpr int kPorts = 2;

int indexOf(const OutputPort& output) {
    return kPorts * output.component + output.port - 1;
}

OutputPort outputAt(int index) {
    return {index / kPorts, index % kPorts + 1};
}

bool makes(Trait trait, const Type& type, const Port& output) {
    switch (trait) {
        case Trait::water:
            return output.carries == Carries::water && !passesOn(type, output);
        case Trait::demand:
            return output.carries == Carries::demand && !passesOn(type, output);
        case Trait::noQuality:
            return output.quality == Quality::none;
        case Trait::spillQuality:
            break;
    }
    return output.quality == Quality::spill;
}

bool handsOn(Trait trait, const Type& type, const Port& output) {
    if (trait == Trait::water || trait == Trait::demand) return passesOn(type, output);
    return output.quality == Quality::passed;
}

}  // namespace

Origins::Origins(const Model& model, const Network& network) : model_(model) {
    Receivers receivers(model.components.size());
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        for (const int connection : network.inputs(static_cast<int>(i))) {
            receivers[at(model.connections[at(connection)].from)].push_back(connection);
        }
    }
    for (const Trait trait : {Trait::water, Trait::demand, Trait::noQuality, Trait::spillQuality}) {
        spread(trait, receivers);
    }
}

// Each output is reached once: the first origin found stands for all.
void Origins::spread(Trait trait, const Receivers& receivers) {
    std::vector<int>& origins = origins_[static_cast<std::size_t>(trait)];
    origins.assign(at(kPorts) * model_.components.size(), -1);
    std::vector<int> waiting;
    const auto reach = [&](int component, bool (*isReached)(Trait, const Type&, const Port&), int origin) {
        const Type& type = *model_.components[at(component)].type;
        for (int port = 1; port <= static_cast<int>(type.out.size()); ++port) {
            const int output = indexOf({component, port});
            if (origins[at(output)] >= 0 || !isReached(trait, type, type.out[at(port) - 1])) continue;
            origins[at(output)] = origin < 0 ? output : origin;
            waiting.push_back(output);
        }
    };
    for (std::size_t i = 0; i < model_.components.size(); ++i) {
        reach(static_cast<int>(i), makes, -1);
    }
    for (std::size_t next = 0; next < waiting.size(); ++next) {
        const auto [sender, port] = outputAt(waiting[next]);
        for (const int index : receivers[at(sender)]) {
            const Connection& connection = model_.connections[at(index)];
            if (connection.fromPort == port) reach(connection.to, handsOn, origins[at(waiting[next])]);
        }
    }
}

std::optional<OutputPort> Origins::of(Trait trait, const OutputPort& output) const {
    const int origin = origins_[static_cast<std::size_t>(trait)][at(indexOf(output))];
    if (origin < 0) return std::nullopt;
    return outputAt(origin);
}

}  // namespace kesto
