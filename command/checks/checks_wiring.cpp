// Warnings of connections that run but make no sense: water where a demand is taken and the other way round, flows that
// are there several times, and mixers that mix what has no quality.
#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "checks.h"
#include "origins.h"

namespace kesto {

namespace {

struct Kind {
    Trait trait;
    Carries carries;
    std::string_view text;
};

constexpr Kind kWater{Trait::water, Carries::water, "water"};
constexpr Kind kDemand{Trait::demand, Carries::demand, "a demand"};

// The type that was meant often explains best what is wrong.
struct Counterpart {
    std::string_view type;
    std::string_view hint;
};

constexpr Counterpart kCounterparts[] = {
    {"gravity_link", "a supply_link is the pipe for demands"},
    {"sewer_link", "a supply_link is the pipe for demands"},
    {"drainage_link", "a supply_link is the pipe for demands"},
    {"supply_link", "a gravity_link is the pipe for water"},
    {"treatment_plant", "wastewater_treatment and treatment_line treat water"},
    {"treatment_line", "a treatment_plant takes demands"},
};

WarningName doubled(bool isWater) {
    return isWater ? WarningName("doubled-water") : WarningName("doubled-demand");
}

class Wiring {
  public:
    Wiring(const Model& model, const Network& network, Diagnostics& diagnostics)
        : model_(model), origins_(model, network), diagnostics_(diagnostics), receivers_(model.components.size()) {
        for (std::size_t i = 0; i < model.components.size(); ++i) {
            inputs_.push_back(network.inputs(static_cast<int>(i)));
            for (const int connection : inputs_.back()) {
                receivers_[at(model.connections[at(connection)].from)].push_back(connection);
            }
        }
    }

    void check() {
        for (std::size_t i = 0; i < model_.components.size(); ++i) {
            const Component& component = model_.components[i];
            for (const int connection : inputs_[i]) {
                checkKind(model_.connections[at(connection)], kWater, kDemand);
                checkKind(model_.connections[at(connection)], kDemand, kWater);
            }
            const int mixed = component.type->anyInputs ? checkSum(inputs_[i]) : kNone;
            for (const int connection : inputs_[i]) {
                if (connection != mixed) checkQuality(model_.connections[at(connection)]);
            }
            for (int port = 1; port <= static_cast<int>(component.type->out.size()); ++port) {
                checkCopies({static_cast<int>(i), port});
            }
            if (component.type->balance.wiring.secondIsReport) checkReport(static_cast<int>(i));
        }
    }

  private:
    const Component& from(const Connection& connection) const { return model_.components[at(connection.from)]; }
    const Component& to(const Connection& connection) const { return model_.components[at(connection.to)]; }

    static OutputPort outputOf(const Connection& connection) { return {connection.from, connection.fromPort}; }

    std::string nameOfOutput(const OutputPort& output) const {
        return fmt::format("\"{}\"", outputName(model_.components[at(output.component)], output.port));
    }

    std::string nameOfInput(const Connection& connection) const {
        return fmt::format("\"{}:{}\"", to(connection).name, portName(to(connection).type->in, connection.toPort));
    }

    // What an input takes; `same` for those that take either.
    Carries takes(const Connection& connection) const {
        const std::vector<Port>& ports = to(connection).type->in;
        return at(connection.toPort) > ports.size() ? Carries::same : ports[at(connection.toPort) - 1].carries;
    }

    bool arrives(const Kind& kind, const Connection& connection) const {
        return origins_.has(kind.trait, outputOf(connection));
    }

    bool onlyArrives(const Kind& kind, const Connection& connection) const {
        return arrives(kind, connection) && !arrives(kind.trait == Trait::water ? kDemand : kWater, connection);
    }

    void say(WarningName code, const Connection& connection, const Component& about, std::string_view text) {
        diagnostics_.warning(
            code, connection.place,
            fmt::format("{} to {}: {}", nameOfOutput(outputOf(connection)), nameOfInput(connection), text), about.name);
    }

    // Where both arrive, the sum of them has been reported; so have links of the wrong kind that only hand it on.
    void checkKind(const Connection& connection, const Kind& found, const Kind& expected) {
        if (takes(connection) != expected.carries || !onlyArrives(found, connection)) return;
        const Port& output = from(connection).type->out[at(connection.fromPort) - 1];
        const Type& receiver = *to(connection).type;
        const bool isHandedOn = output.carries == expected.carries;
        const bool handsOn = std::any_of(receiver.out.begin(), receiver.out.end(),
                                         [&](const Port& out) { return passesOn(receiver, out); });
        if (isHandedOn && handsOn) return;
        const WarningName code =
            found.trait == Trait::water ? WarningName("water-to-demand") : WarningName("demand-to-water");
        const OutputPort origin = *origins_.of(found.trait, outputOf(connection));
        const std::string text =
            origin == outputOf(connection)
                ? fmt::format("the output carries {}, the input takes {}", found.text, expected.text)
                : fmt::format("{} from {} reaches an input that takes {}", found.text, nameOfOutput(origin),
                              expected.text);
        say(code, connection, to(connection), text + instead(connection, found, expected));
    }

    // `; did you mean ...?`, which type is for what arrives, or that a series can be either.
    std::string instead(const Connection& connection, const Kind& found, const Kind& expected) const {
        std::vector<std::string> names;
        const Type& sender = *from(connection).type;
        for (std::size_t i = 0; i < sender.out.size(); ++i) {
            if (sender.out[i].carries != expected.carries) continue;
            names.push_back(nameOfOutput({connection.from, static_cast<int>(i) + 1}));
        }
        for (const Port& port : to(connection).type->in) {
            if (port.carries == found.carries)
                names.push_back(fmt::format("\"{}:{}\"", to(connection).name, port.name));
        }
        const OutputPort origin = *origins_.of(found.trait, outputOf(connection));
        const bool isSeries = model_.components[at(origin.component)].code == code::kDemandSource;
        const std::string series =
            isSeries ? fmt::format("; if the series is an inflow, accept \"demand-to-water {}\"", to(connection).name)
                     : "";
        if (!names.empty()) return series + fmt::format("; did you mean {}?", listOf({names.begin(), names.end()}));
        if (isSeries) return series;
        for (const Counterpart& row : kCounterparts) {
            if (row.type == to(connection).type->name) return fmt::format("; {}", row.hint);
        }
        return {};
    }

    // Water and demands in one sum; the connection that was reported, or none.
    int checkSum(const std::vector<int>& inputs) {
        int water = kNone, demand = kNone;
        for (const int connection : inputs) {
            if (water == kNone && onlyArrives(kWater, model_.connections[at(connection)])) water = connection;
            if (demand == kNone && onlyArrives(kDemand, model_.connections[at(connection)])) demand = connection;
        }
        if (water == kNone || demand == kNone) return kNone;
        const OutputPort waterFrom = *origins_.of(Trait::water, outputOf(model_.connections[at(water)]));
        const OutputPort demandFrom = *origins_.of(Trait::demand, outputOf(model_.connections[at(demand)]));
        const Connection& second = model_.connections[at(std::max(water, demand))];
        say("mixed-signals", second, to(second),
            fmt::format("the {} adds up water from {} and a demand from {}; a demand is no water: keep the two apart",
                        to(second).type->name, nameOfOutput(waterFrom), nameOfOutput(demandFrom)));
        return std::max(water, demand);
    }

    void checkQuality(const Connection& connection) {
        const Component& receiver = to(connection);
        if (!mixesQualities(*receiver.type) || takes(connection) == Carries::demand) return;
        const auto spill = origins_.of(Trait::spillQuality, outputOf(connection));
        const auto none = origins_.of(Trait::noQuality, outputOf(connection));
        const bool isMixer = receiver.code == code::kMixer;
        if (spill) {
            say("no-quality", connection, receiver,
                fmt::format("while {} is 0 its quality is a division by zero, and {}; put a quality_setter between the "
                            "two",
                            *spill == outputOf(connection) ? "the output" : nameOfOutput(*spill),
                            isMixer ? "the mixer sends a quality of -2147483648"
                                    : "that of the reservoir is no number from then on"));
        } else if (none && isMixer) {
            say("no-quality", connection, receiver,
                fmt::format("{} carries no quality, and the -1 that stands for none is mixed in like a number; {}",
                            *none == outputOf(connection) ? "the output" : nameOfOutput(*none),
                            remedy(connection, *none)));
        }
    }

    std::string remedy(const Connection& connection, const OutputPort& none) const {
        const Component& origin = model_.components[at(none.component)];
        if (arrives(kDemand, connection)) return "add up demands in a junction";
        if (origin.code == code::kJunction) {
            return fmt::format("make \"{}\" a mixer, or put a quality_setter between the two", origin.name);
        }
        return "put a quality_setter between the two";
    }

    // A logger only looks, and what takes something else has been reported.
    bool takesPart(const Connection& connection, const Kind& kind) const {
        const Carries wanted = takes(connection);
        return to(connection).code != code::kLogger && (wanted == Carries::same || wanted == kind.carries);
    }

    void checkCopies(const OutputPort& output) {
        const bool isWater = origins_.has(Trait::water, output);
        if (!isWater && !origins_.has(Trait::demand, output)) return;
        const Kind& kind = isWater ? kWater : kDemand;
        std::vector<int> copies;
        for (const int connection : receivers_[at(output.component)]) {
            const Connection& one = model_.connections[at(connection)];
            if (one.fromPort == output.port && takesPart(one, kind)) copies.push_back(connection);
        }
        if (copies.size() < 2) return;
        std::sort(copies.begin(), copies.end());
        std::vector<std::string> names;
        for (const int connection : copies) {
            names.push_back(nameOfInput(model_.connections[at(connection)]));
        }
        const std::string ends = listOf({names.begin(), names.end()}, "and");
        const std::string times = names.size() == 2 ? "twice" : fmt::format("{} times", names.size());
        const std::string text =
            isWater ? fmt::format(
                          "{} feeds {}: each gets the whole flow, so the water is there {}; a splitter or "
                          "threshold_divider divides a flow, a connector copies it on purpose",
                          nameOfOutput(output), ends, times)
                    : fmt::format(
                          "{} asks {}: each is asked for the whole demand, so it is asked {}; lead what one "
                          "cannot serve to the next, or divide the demand with a splitter; a connector copies "
                          "it on purpose",
                          nameOfOutput(output), ends, times);
        const Component& sender = model_.components[at(output.component)];
        diagnostics_.warning(doubled(isWater), model_.connections[at(copies[1])].place, text, sender.name);
    }

    // Where the second output repeats a part of the first, only one of them can lead on.
    void checkReport(int component) {
        std::array<int, 2> used{kNone, kNone};
        for (const int connection : receivers_[at(component)]) {
            const Connection& one = model_.connections[at(connection)];
            if (to(one).code != code::kLogger) used[at(one.fromPort) - 1] = connection;
        }
        if (used[0] == kNone || used[1] == kNone) return;
        const bool isWater = origins_.has(Trait::water, {component, 1});
        const Connection& report = model_.connections[at(used[1])];
        say(doubled(isWater), report, from(report),
            fmt::format("the {} is part of {}, which is connected too, so it is there twice; lead on only one of them, "
                        "and record the other with a logger",
                        portName(from(report).type->out, 2), nameOfOutput({component, 1})));
    }

    const Model& model_;
    const Origins origins_;
    Diagnostics& diagnostics_;
    std::vector<std::vector<int>> inputs_, receivers_;  // connections that count, by component
};

}  // namespace

void checkWiring(const Model& model, const Network& network, Diagnostics& diagnostics) {
    Wiring(model, network, diagnostics).check();
}

}  // namespace kesto
