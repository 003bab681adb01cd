// Checks of the connections: as many inputs as each type asks for, an order of calculation, paths that can be traced.
#include <fmt/format.h>

#include <set>

#include "checks.h"
#include "network.h"

namespace kesto {

namespace {

std::string ends(const Model& model, const Connection& connection) {
    const Component& to = model.components[at(connection.to)];
    return fmt::format("\"{}\" to \"{}:{}\"", outputName(model.components[at(connection.from)], connection.fromPort),
                       to.name, portName(to.type->in, connection.toPort));
}

void checkPairs(const Model& model, const Network& network, Diagnostics& diagnostics) {
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        std::map<int, int> first;
        for (const int index : network.incoming(static_cast<int>(i))) {
            const Connection& connection = model.connections[at(index)];
            const auto [other, isNew] = first.emplace(connection.from, index);
            if (isNew) continue;
            diagnostics.warning(
                "replaced-connection", connection.place,
                fmt::format("{} replaces {}: two components carry one connection in each direction; put "
                            "a connector between them for a second",
                            ends(model, connection), ends(model, model.connections[at(other->second)])),
                model.components[i].name);
        }
    }
}

// "inflow and demand", of what a component still lacks.
std::string missingPorts(const Type& type, const std::set<int>& given) {
    std::string text;
    for (int port = 1; port <= static_cast<int>(type.in.size()); ++port) {
        if (given.contains(port)) continue;
        text += (text.empty() ? "" : " and ") + portName(type.in, port);
    }
    return text;
}

void checkInputs(const Model& model, const Network& network, Diagnostics& diagnostics) {
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        const Component& component = model.components[i];
        const Type& type = *component.type;
        const std::vector<int> inputs = network.inputs(static_cast<int>(i));
        const int found = static_cast<int>(inputs.size());
        std::set<int> ports;
        for (const int connection : inputs) {
            ports.insert(model.connections[at(connection)].toPort);
        }
        const bool sums = component.code == code::kJunction || component.code == code::kMixer;
        const bool right = type.inputs() == kAnyInputs ? sums || found <= 2 : found == type.inputs();
        if (!right) {
            const std::string missing = missingPorts(type, ports);
            diagnostics.error("wrong-inputs", component.place,
                              fmt::format("{} ({}): {} component{} send{} to it; expected {}{}", nameOf(component),
                                          type.name, found, found == 1 ? "" : "s", found == 1 ? "s" : "",
                                          type.inputs() == kAnyInputs ? "at most 2" : std::to_string(type.inputs()),
                                          found < type.inputs() && !missing.empty() ? ": " + missing + " missing"
                                          : found > 2                               ? "; a junction adds flows up"
                                                                                    : ""),
                              component.name);
        } else if (!sums && found > 0 && static_cast<int>(ports.size()) < found) {
            diagnostics.warning("same-input", component.place,
                                fmt::format("{} ({}): both senders use the same input; the other input "
                                            "gets none",
                                            nameOf(component), type.name),
                                component.name);
        } else if (!sums && found == 1 && *ports.begin() != 1) {
            diagnostics.warning("unread-input", component.place,
                                fmt::format("{} ({}): its only sender uses input 2; the component reads "
                                            "input 1 and finds no signal there",
                                            nameOf(component), type.name),
                                component.name);
        }
    }
}

std::string someNames(const Model& model, const std::vector<int>& components) {
    std::vector<std::string_view> names;
    for (const int component : components) {
        names.push_back(model.components[at(component)].name);
    }
    return listOf(names, "and");
}

void checkOrder(const Model& model, const Network& network, Diagnostics& diagnostics) {
    const int silent = network.silentDelay();
    if (silent >= 0) {
        const Component& delay = model.components[at(silent)];
        diagnostics.error("no-order", delay.place,
                          fmt::format("{} (delay): it sends to nothing, but a loop would have to be opened "
                                      "at it; connect it, or list it after the delays of the loop",
                                      nameOf(delay)),
                          delay.name);
        return;
    }
    const std::vector<int> unplaced = network.unplaced();
    if (unplaced.empty()) return;
    std::string_view delayed;
    for (const int component : unplaced) {
        for (const int connection : network.incoming(component)) {
            const Component& sender = model.components[at(model.connections[at(connection)].from)];
            if (sender.code == code::kDelay && network.outgoing(model.connections[at(connection)].from).size() > 1) {
                delayed = sender.name;
            }
        }
    }
    const Component& first = model.components[at(unplaced.front())];
    diagnostics.error(
        "no-order", first.place,
        fmt::format("no order of calculation: {} on or behind a loop without a delay: {}{}",
                    unplaced.size() == 1 ? "this component lies" : "these components lie", someNames(model, unplaced),
                    delayed.empty() ? std::string()
                                    : fmt::format("; delay \"{}\" opens a loop only for the first "
                                                  "connection listed of it: let it send to one connector",
                                                  delayed)));
}

void checkTracingWork(const Model& model, const Network& network, Diagnostics& diagnostics) {
    constexpr double kMuch = 1e6;  // a second of set-up, some 10 ms in each step
    if (network.tracingWork(kMuch) <= kMuch) return;
    diagnostics.warning(
        "long-tracing", model.simulation.place,
        "[simulation]: trace_sources: in each step the receiving units look at more than a million sources "
        "and splitters; the run takes long and much memory");
}

void checkTracing(const Model& model, const Network& network, Diagnostics& diagnostics) {
    if (!model.simulation.traceSources) return;
    checkTracingWork(model, network, diagnostics);
    const std::vector<bool> traced = network.tracedFromReceivers();
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        const Component& component = model.components[i];
        const int index = static_cast<int>(i);
        if (isReceivingUnit(component.code) && network.incoming(index).empty() && network.outgoing(index).empty()) {
            diagnostics.error("untraceable", component.place,
                              fmt::format("{} ({}): it takes part in no connection, so its sources "
                                          "cannot be traced",
                                          nameOf(component), component.type->name),
                              component.name);
        }
        if (component.code == code::kSplitter && traced[i] && network.outgoing(index).empty()) {
            diagnostics.error("untraceable", component.place,
                              fmt::format("{} (splitter): sources are traced through it, but it sends "
                                          "to nothing",
                                          nameOf(component)),
                              component.name);
        }
    }
}

}  // namespace

void checkNetwork(const Model& model, Diagnostics& diagnostics) {
    const Network network(model);
    checkPairs(model, network, diagnostics);
    checkInputs(model, network, diagnostics);
    checkOrder(model, network, diagnostics);
    checkTracing(model, network, diagnostics);
    checkWiring(model, network, diagnostics);
}

}  // namespace kesto
