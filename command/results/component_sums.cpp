#include "component_sums.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "balance_steps.h"

namespace kesto {

namespace {

constexpr double kRounding = 1.0 / (1 << 22);  // four roundings to single precision, each of half a last place

bool isMultiplier(const Recorded& recorded, int component) {
    return recorded.component(component).code == code::kMultiplier;
}

}  // namespace

ComponentSums::ComponentSums(const Recorded& recorded, const Outlets& outlets, const Multiplicity& multiplicity)
    : recorded_(recorded), outlets_(outlets), multiplicity_(multiplicity) {
    for (int i = 0; i < recorded.components(); ++i) {
        sums_.push_back(sumOf(i));
    }
}

// Why a component cannot be balanced; empty when it can.
std::string ComponentSums::missing(int component) const {
    if (!recorded_.whyUnread(component).empty()) return std::string(recorded_.whyUnread(component));
    for (int port = 1; port <= recorded_.outputs(component); ++port) {
        std::string why = recorded_.whyMissing(component, port);
        if (!why.empty()) return why;
    }
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        std::string why = recorded_.whyMissing(connection.from, connection.fromPort);
        if (!why.empty()) return why;
    }
    return {};
}

ComponentSum ComponentSums::sumOf(int component) const {
    ComponentSum sum;
    const BalanceIdentity& balance = recorded_.type(component).balance;
    sum.notBalanced = balance.isOfWater() ? missing(component) : "no water passes it";
    if (!sum.notBalanced.empty()) return sum;
    sum.tolerance = kRounding * magnitudeOfSignals(component);
    if (isMultiplier(recorded_, component)) {
        if (recorded_.isWhole()) addScaled(component, sum);
        return sum;
    }
    if (balance.stored == Stored::underWay) addUnderWay(component, sum);
    if (balance.stored != Stored::nothing && balance.stored != Stored::underWay) addStored(component, sum);
    addTotals(component, sum);
    addSteps(component, sum);
    return sum;
}

double ComponentSums::magnitudeOfSignals(int component) const {
    double sum = 0;
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        sum += recorded_.sum(connection.from, connection.fromPort).magnitude;
    }
    for (int port = 1; port <= recorded_.outputs(component); ++port) {
        sum += recorded_.sum(component, port).magnitude;
    }
    return sum;
}

Sum ComponentSums::amountOf(int component, Amounts amount) const {
    Sum sum;
    const auto add = [&](const Sum& one, double times) {
        sum.total += times * one.total;
        sum.magnitude += std::abs(times) * one.magnitude;
    };
    if (has(amount, Amounts::rain)) add(recorded_.rain(component), recorded_.component(component).size);
    if (has(amount, Amounts::out1)) {
        const bool isRecorder = recorded_.type(component).out.empty();
        add(recorded_.sum(component, isRecorder ? 0 : 1), 1);
    }
    if (has(amount, Amounts::out2)) add(recorded_.sum(component, 2), 1);
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        const Amounts input = connection.toPort == 2 ? Amounts::in2 : Amounts::in1;
        if (has(amount, input)) add(recorded_.sum(connection.from, connection.fromPort), 1);
    }
    return sum;
}

// Terms that follow from totals; where the component counts differently in each step, they do not.
void ComponentSums::addTotals(int component, ComponentSum& sum) const {
    const Factor& factor = multiplicity_.of(component);
    if (!factor.series.empty()) return;
    const BalanceInputs inputs(recorded_, component);
    for (const BalanceTerm& term : recorded_.type(component).balance.terms) {
        if (!term.isLinear() || !term.isOf(recorded_.component(component).code)) continue;
        const double share = term.share > 0 ? inputs.parameter(term.share) : 1;
        const Sum plus = amountOf(component, term.reads), minus = amountOf(component, term.less);
        const double litres = share * (plus.total - minus.total);
        sum.one[static_cast<std::size_t>(term.term)] += litres;
        sum.all[static_cast<std::size_t>(term.term)] += factor.constant * litres;
        sum.tolerance += kRounding * std::abs(share) * (plus.magnitude + minus.magnitude);
    }
}

void ComponentSums::addSteps(int component, ComponentSum& sum) const {
    const Factor& factor = multiplicity_.of(component);
    std::vector<BalanceTerm> terms;
    for (const BalanceTerm& term : recorded_.type(component).balance.terms) {
        const bool isAdded = term.isLinear() && factor.series.empty();
        if (!isAdded && term.isOf(recorded_.component(component).code)) terms.push_back(term);
    }
    if (terms.empty()) return;
    BalanceSteps steps(recorded_, component, recorded_.inputs(component), outlets_.copies(component));
    for (std::size_t step = 0; step < recorded_.steps(); ++step) {
        const BalanceStep& now = steps.next();
        const double times = factor.at(step);
        for (const BalanceTerm& term : terms) {
            const double litres = term.at(now);
            sum.one[static_cast<std::size_t>(term.term)] += litres;
            sum.all[static_cast<std::size_t>(term.term)] += times * litres;
            sum.tolerance += kRounding * std::abs(litres);
        }
    }
}

void ComponentSums::addStored(int component, ComponentSum& sum) const {
    const float* stored = recorded_.storage(component);
    if (!stored) return;
    const Factor& factor = multiplicity_.of(component);
    const double perUnit = BalanceInputs(recorded_, component).litresPerUnit();
    double before = perUnit * recorded_.storedAtFirst(component);
    for (std::size_t step = 0; step < recorded_.steps(); ++step) {
        const double after = perUnit * static_cast<double>(stored[step]);
        sum.storedByOne += after - before;
        sum.storedByAll += factor.at(step) * (after - before);
        sum.tolerance += kRounding * (std::abs(before) + std::abs(after));
        before = after;
    }
}

// Senders that count as often as the multiplier says are not scaled by it, but counted: a house that stands for a
// hundred sends the water of a hundred.
void ComponentSums::addScaled(int component, ComponentSum& sum) const {
    const auto addedTo = [&](bool areCounted) {
        std::vector<int> inputs;
        for (const int index : recorded_.inputs(component)) {
            const Factor* sender = &multiplicity_.of(recorded_.connection(index).from);
            if ((sender == &multiplicity_.into(component)) == areCounted) inputs.push_back(index);
        }
        ComponentSum added;
        const BalanceTerm& term = recorded_.type(component).balance.terms.front();
        BalanceSteps steps(recorded_, component, inputs, 1);
        for (std::size_t step = 0; !inputs.empty() && step < recorded_.steps(); ++step) {
            added.scaled += term.at(steps.next());
        }
        return added.scaled;
    };
    sum.scaled = addedTo(true);
    sum.one[static_cast<std::size_t>(Term::added)] = addedTo(false);
}

// A delay holds what came in its last steps, on a loop one step more.
void ComponentSums::addUnderWay(int component, ComponentSum& sum) const {
    double seen = 0;
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        seen += recorded_.sum(connection.from, connection.fromPort).total;
    }
    seen -= recorded_.sum(component, 1).total;
    const auto held = static_cast<std::size_t>(std::lround(recorded_.component(component).size));
    double best = std::numeric_limits<double>::infinity();
    for (const std::size_t steps : {held, held + 1}) {
        double last = 0;
        for (std::size_t step = recorded_.steps() - std::min(steps, recorded_.steps()); step < recorded_.steps();
             ++step) {
            for (const int index : recorded_.inputs(component)) {
                const Connection& connection = recorded_.connection(index);
                last += amount(recorded_.signals(connection.from, connection.fromPort)[step]);
            }
        }
        if (!(std::abs(seen - best) <= std::abs(seen - last))) best = last;
    }
    sum.storedByOne = best;
    const Factor& factor = multiplicity_.of(component);
    if (factor.series.empty()) {
        sum.storedByAll = factor.constant * best;
        return;
    }
    sum.storedByAll = -totalOf(recorded_, component, 1, factor);
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        sum.storedByAll += totalOf(recorded_, connection.from, connection.fromPort, factor);
    }
}

double totalOf(const Recorded& recorded, int component, int port, const Factor& factor) {
    if (factor.series.empty()) return factor.constant * recorded.sum(component, port).total;
    const Signal* signals = recorded.signals(component, port);
    double sum = 0;
    for (std::size_t step = 0; signals && step < recorded.steps(); ++step) {
        sum += factor.series[step] * amount(signals[step]);
    }
    return sum;
}

}  // namespace kesto
