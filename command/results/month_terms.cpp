#include "month_terms.h"

#include <algorithm>

#include "balance_steps.h"

namespace kesto {

void add(Months& sums, const Months& more) {
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sums[i] += more[i];
    }
}

Months monthsOf(const Recorded& recorded, const RunMonths& months, int component, int port, const Factor& factor) {
    if (factor.series.empty()) {
        const std::span<const double> flow = recorded.byMonth(component, port);
        Months sums(flow.begin(), flow.end());
        for (double& sum : sums) {
            sum *= factor.constant;
        }
        return sums;
    }
    const Signal* signals = recorded.signals(component, port);
    return sumOfSteps(months, [&](std::size_t step) { return factor.at(step) * amount(signals[step]); });
}

std::optional<Months> MonthTerms::of(Term term) {
    Months sums(months_.count(), 0);
    for (int i = 0; i < recorded_.components(); ++i) {
        for (const BalanceTerm& one : recorded_.type(i).balance.terms) {
            if (one.term != term || !one.isOf(recorded_.component(i).code)) continue;
            if (!sums_.isBalanced(i) || !addTerm(i, one, sums)) return std::nullopt;
        }
    }
    return sums;
}

bool MonthTerms::addTerm(int component, const BalanceTerm& term, Months& sums) {
    const Factor& factor = multiplicity_.of(component);
    if (term.isLinear() && factor.series.empty()) {
        const double share = term.share > 0 ? BalanceInputs(recorded_, component).parameter(term.share) : 1;
        return addAmounts(component, term.reads, factor.constant * share, sums) &&
               addAmounts(component, term.less, -factor.constant * share, sums);
    }
    Months none(months_.count(), 0);
    if (!addAmounts(component, term.reads, 0, none) || !addAmounts(component, term.less, 0, none)) return false;
    BalanceSteps steps(recorded_, component, recorded_.inputs(component));
    add(sums, sumOfSteps(months_, [&](std::size_t step) { return factor.at(step) * term.at(steps.next()); }));
    return true;
}

bool MonthTerms::addAmounts(int component, Amounts amounts, double times, Months& sums) {
    bool isKnown = true;
    if (has(amounts, Amounts::rain)) {
        const Months& rain = rainOf(component);
        for (std::size_t i = 0; i < rain.size(); ++i) {
            sums[i] += times * recorded_.component(component).size * rain[i];
        }
    }
    const bool isRecorder = recorded_.type(component).out.empty();
    if (has(amounts, Amounts::out1)) isKnown &= addFlow(component, isRecorder ? 0 : 1, times, sums);
    if (has(amounts, Amounts::out2)) isKnown &= addFlow(component, 2, times, sums);
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        if (!has(amounts, connection.toPort == 2 ? Amounts::in2 : Amounts::in1)) continue;
        isKnown &= addFlow(connection.from, connection.fromPort, times, sums);
    }
    return isKnown;
}

bool MonthTerms::addFlow(int component, int port, double times, Months& sums) {
    const std::span<const double> flow = recorded_.byMonth(component, port);
    for (std::size_t i = 0; i < flow.size(); ++i) {
        sums[i] += times * flow[i];
    }
    return !flow.empty();
}

const Months& MonthTerms::rainOf(int component) {
    const int group = recorded_.component(component).group;
    const auto [known, isNew] = rain_.emplace(group, Months(months_.count(), 0));
    const auto values = isNew ? recorded_.ofGroup(component, SeriesKind::rainfall) : nullptr;
    if (values)
        known->second = sumOfSteps(months_, [&](std::size_t step) { return static_cast<double>((*values)[step]); });
    return known->second;
}

std::optional<Months> MonthTerms::unmet(int component) {
    const Service& service = recorded_.type(component).service;
    if (!sums_.isBalanced(component)) return std::nullopt;
    const Factor& factor = multiplicity_.of(component);
    if (service.reads == Amounts::out1) return monthsOf(recorded_, months_, component, 1, factor);
    BalanceSteps steps(recorded_, component, recorded_.inputs(component));
    return sumOfSteps(months_, [&](std::size_t step) { return factor.at(step) * service.unmet(steps.next()); });
}

std::optional<Months> MonthTerms::demand(int component) {
    if (!sums_.isBalanced(component)) return std::nullopt;
    Months sums(months_.count(), 0);
    for (const int index : recorded_.inputs(component)) {
        const Connection& connection = recorded_.connection(index);
        if (connection.toPort != recorded_.type(component).service.demandPort) continue;
        if (!recorded_.signals(connection.from, connection.fromPort)) return std::nullopt;
        add(sums, monthsOf(recorded_, months_, connection.from, connection.fromPort, multiplicity_.of(component)));
    }
    return sums;
}

}  // namespace kesto
