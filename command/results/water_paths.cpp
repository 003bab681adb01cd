#include "water_paths.h"

#include <cmath>
#include <optional>

#include "balance_steps.h"

namespace kesto {

namespace {

// Reasons that lie in the wiring; those that lie in the type are the catalogue's.
constexpr std::string_view kFeedsSeveral = "its output feeds several components, and each gets all of it";
constexpr std::string_view kAsksSeveral = "its demand is asked of several components, and each serves all of it";
constexpr std::string_view kCountsDiffer =
    "it stands for as many as the multipliers on its first connection say, but this output leads past them";
constexpr std::string_view kDemandAsWater = "a demand reaches its inflow, and is taken for water";
constexpr std::string_view kWaterAsDemand =
    "water reaches its demand: it arrives nowhere, and what it asks for is served";
constexpr std::string_view kReportLedOn = "its excess is part of its first output: led on, it counts a second time";
constexpr std::string_view kSuppliesTwice = "it puts out as water what it also counts as delivered to who asks for it";

}  // namespace

WaterPaths::WaterPaths(const Recorded& recorded, const Outlets& outlets, const Multiplicity& multiplicity,
                       const ComponentSums& sums)
    : recorded_(recorded),
      outlets_(outlets),
      multiplicity_(multiplicity),
      sums_(sums),
      demandSources_(recorded, multiplicity, sums),
      handedBack_(static_cast<std::size_t>(recorded.components()), 0) {
    for (int i = 0; i < recorded.components(); ++i) {
        addInputs(i);
        addOutputs(i);
        if (sums.isBalanced(i)) addOwn(i);
    }
    addUses();
}

double WaterPaths::sent(const Connection& connection, const Factor& factor) const {
    return totalOf(recorded_, connection.from, connection.fromPort, factor);
}

// What an output asks for. What a component takes although nobody is asked for it, it creates.
double WaterPaths::asked(int component, int port) const {
    const double total = totalOf(recorded_, component, port, multiplicity_.of(component));
    const bool isCreated = recorded_.type(component).balance.wiring.asksBy == port && !outlets_.asks(component, port);
    return isCreated ? total - sums_.of(component).ofAll(Term::takenForDelivered) : total;
}

void WaterPaths::addInputs(int component) {
    if (recorded_.component(component).code == code::kLogger) return;
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        if (!recorded_.signals(connection.from, connection.fromPort)) continue;
        const Carries sends = recorded_.carriers().ofOutput(connection.from, connection.fromPort);
        const Carries takes = recorded_.carriers().ofInput(component, connection.toPort);
        if (sends == Carries::water) {
            takes == Carries::demand ? addWaterAsDemand(connection) : addWater(connection);
        } else if (sends == Carries::demand) {
            takes == Carries::water ? addDemandAsWater(connection) : addDemand(connection);
        }
    }
}

void WaterPaths::addOutputs(int component) {
    for (int port = 1; port <= recorded_.outputs(component); ++port) {
        const Outlet& outlet = outlets_.of(component, port);
        if (!recorded_.signals(component, port)) continue;
        if (outlet.isEnd()) addEnd(component, port);
        if (recorded_.type(component).isReport(port)) {
            addReport(component, port);
        } else if (outlet.connections.size() > 1) {
            addCopies(component, port);
        }
    }
}

void WaterPaths::addWater(const Connection& connection) {
    const auto& [from, to] = std::pair(connection.from, connection.to);
    const Factor& leaves = multiplicity_.of(from);
    const Factor& enters = multiplicity_.into(to);
    const double litres = sent(connection, leaves);
    const Component& receiver = recorded_.component(to);
    if (receiver.code == code::kWaterBody) return moveAcross(from, kOutside, litres, Border::waterBody, to);
    const double added = &leaves == &enters ? 0 : sent(connection, enters) - litres;
    if (receiver.code == code::kMultiplier) {
        move(from, to, litres);
        create(to, added, receiver.type->balance.meaningOf(Term::added));
    } else {
        move(from, to, litres + added);
        create(from, added, kCountsDiffer);
    }
}

void WaterPaths::addDemand(const Connection& connection) {
    const auto& [from, to] = std::pair(connection.from, connection.to);
    const Factor& leaves = multiplicity_.of(from);
    const Factor& enters = multiplicity_.into(to);
    const double litres = asked(from, connection.fromPort);
    const Component& receiver = recorded_.component(to);
    if (receiver.code == code::kWaterBody) return askMains({from, connection.fromPort}, litres, to);
    const double added = &leaves == &enters ? 0 : sent(connection, enters) - litres;
    if (receiver.code == code::kMultiplier) {
        move(to, from, litres, true);
        create(to, -added, receiver.type->balance.meaningOf(Term::added));
    } else {
        move(to, from, litres + added, true);
        create(from, -added, kCountsDiffer);
    }
}

// A series of demands that is led to an inflow is a source of water; any other demand remains unanswered.
void WaterPaths::addDemandAsWater(const Connection& connection) {
    const auto& [from, to] = std::pair(connection.from, connection.to);
    const double litres = sent(connection, multiplicity_.into(to));
    const bool countAlike = &multiplicity_.of(from) == &multiplicity_.into(to);
    if (const auto sources = countAlike ? demandSources_.of(from, litres) : std::nullopt) {
        for (const auto& [source, part] : *sources) {
            moveAcross(kOutside, from, part, Border::source, source);
        }
        return handBack(*sources, to);
    }
    if (!recorded_.type(from).isReport(connection.fromPort)) {
        askMains({from, connection.fromPort}, asked(from, connection.fromPort), from);
    }
    create(to, litres, kDemandAsWater);
}

void WaterPaths::addWaterAsDemand(const Connection& connection) {
    const int to = connection.to;
    const double arrives = sent(connection, multiplicity_.of(connection.from));
    const bool isPutOut = recorded_.type(to).balance.wiring.suppliesAsWater;
    const double served = isPutOut ? 0 : sent(connection, multiplicity_.into(to));
    move(connection.from, to, arrives);
    create(to, -arrives - served, kWaterAsDemand);
}

void WaterPaths::addEnd(int component, int port) {
    const int logger = outlets_.of(component, port).logger;
    const int place = logger < 0 ? component : logger;
    const Carries carries = recorded_.carriers().ofOutput(component, port);
    if (carries == Carries::water) {
        const double litres = totalOf(recorded_, component, port, multiplicity_.of(component));
        moveAcross(component, kOutside, litres, Border::openEnd, place);
    } else if (carries == Carries::demand) {
        const double litres = asked(component, port);
        if (recorded_.type(component).balance.wiring.drawsFromSource) {
            moveAcross(kOutside, component, litres, Border::source, component);
        } else {
            askMains({component, port}, litres, place);
        }
    }
}

// What is asked for by a report comes on top of what its component needs.
void WaterPaths::addReport(int component, int port) {
    for (const int index : outlets_.of(component, port).connections) {
        const Connection& connection = recorded_.connection(index);
        const bool isAsked = recorded_.carriers().ofInput(connection.to, connection.toPort) != Carries::water;
        if (isAsked) create(component, -asked(component, port), kReportLedOn);
    }
}

void WaterPaths::addCopies(int component, int port) {
    const auto more = static_cast<double>(outlets_.of(component, port).connections.size() - 1);
    const bool isDemand = recorded_.carriers().ofOutput(component, port) == Carries::demand;
    if (isDemand) {
        create(component, -more * asked(component, port), kAsksSeveral);
    } else {
        create(component, more * totalOf(recorded_, component, port, multiplicity_.of(component)), kFeedsSeveral);
    }
}

// What a type creates by design.
void WaterPaths::addOwn(int component) {
    const BalanceIdentity& balance = recorded_.type(component).balance;
    const ComponentSum& sum = sums_.of(component);
    const double rounding = multiplicity_.of(component).greatest * sum.tolerance;
    const auto createOf = [&](Term term) {
        const double litres = sum.ofAll(term);
        if (!(std::abs(litres) <= rounding)) create(component, litres, balance.meaningOf(term));
    };
    createOf(Term::created);
    if (balance.wiring.asksBy > 0 && !outlets_.asks(component, balance.wiring.asksBy)) {
        createOf(Term::takenForDelivered);
    }
    const bool isDemand = recorded_.carriers().of(component) == Carries::demand;
    if (balance.wiring.copies) {
        const double added = sum.ofAll(Term::added);
        create(component, isDemand ? -added : added, balance.meaningOf(Term::added));
    }
    if (balance.wiring.suppliesAsWater) addSupply(component);
}

// What is asked of it and put out as water is not delivered to who asks as well: a demand source hands it back.
void WaterPaths::addSupply(int component) {
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        if (recorded_.carriers().ofOutput(connection.from, connection.fromPort) != Carries::demand) continue;
        const double litres = sent(connection, multiplicity_.into(component));
        const bool countAlike = &multiplicity_.of(connection.from) == &multiplicity_.into(component);
        if (const auto sources = countAlike ? demandSources_.of(connection.from, litres) : std::nullopt) {
            handBack(*sources, component);
        } else {
            create(component, litres, kSuppliesTwice);
        }
    }
}

void WaterPaths::addUses() {
    for (int i = 0; i < recorded_.components(); ++i) {
        const double used = sums_.of(i).ofAll(Term::used) - handedBack_[at(i)];
        if (used != 0) moveAcross(i, kOutside, used, Border::use, i);
    }
}

void WaterPaths::handBack(const DemandSources::Shares& sources, int to) {
    for (const auto& [source, litres] : sources) {
        move(source, to, litres);
        handedBack_[at(source)] += litres;
    }
}

void WaterPaths::askMains(OutputPort output, double litres, int place) {
    moveAcross(kOutside, output.component, litres, Border::mains, place, true);
    if (litres != 0 && sums_.isBalanced(output.component)) unanswered_.push_back(output);
}

std::vector<double> WaterPaths::mains() const {
    std::vector<double> sums(recorded_.steps(), 0);
    for (const auto& [component, port] : unanswered_) {
        const Type& type = recorded_.type(component);
        const Factor& factor = multiplicity_.of(component);
        const Signal* signals = recorded_.signals(component, port);
        // Of what a store asks for, the part that it has created does not come from the mains.
        const bool isPart = type.balance.wiring.asksBy == port && type.service.unmet;
        std::optional<BalanceSteps> steps;
        if (isPart) steps.emplace(recorded_, component, recorded_.inputs(component), 1);
        for (std::size_t step = 0; step < sums.size(); ++step) {
            const double litres = isPart ? type.service.unmet(steps->next()) : amount(signals[step]);
            sums[step] += factor.at(step) * litres;
        }
    }
    return sums;
}

double WaterPaths::stored(int component) const {
    const bool isDelayedDemand = recorded_.type(component).balance.stored == Stored::underWay &&
                                 recorded_.carriers().of(component) == Carries::demand;
    const double change = sums_.of(component).storedByAll;
    return isDelayedDemand ? -change : change;
}

void WaterPaths::move(int from, int to, double litres, bool isAsked) {
    if (!sums_.isBalanced(from)) return moveAcross(kOutside, to, litres, Border::notRecorded, from, isAsked);
    if (!sums_.isBalanced(to)) return moveAcross(from, kOutside, litres, Border::notRecorded, to, isAsked);
    movements_.push_back({.from = from, .to = to, .litres = litres, .isAsked = isAsked});
}

void WaterPaths::moveAcross(int from, int to, double litres, Border border, int place, bool isAsked) {
    if (sums_.isBalanced(from == kOutside ? to : from))
        movements_.push_back({from, to, litres, border, place, isAsked});
}

void WaterPaths::create(int component, double litres, std::string_view reason) {
    if (litres != 0 && sums_.isBalanced(component)) creations_.push_back({component, litres, reason});
}

}  // namespace kesto
