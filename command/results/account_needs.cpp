#include "account_needs.h"

#include <algorithm>
#include <set>

#include "multiplicity.h"
#include "outlets.h"

namespace kesto {

namespace {

// Outputs that tell what enters and leaves the network, and what its components make and lose.
class Border {
  public:
    Border(const NetworkView& network, const Outlets& outlets, const Multiplicity& multiplicity)
        : network_(network), outlets_(outlets), multiplicity_(multiplicity) {
        for (int i = 0; i < network.components(); ++i) {
            if (!network.whyUnread(i).empty()) isEnough_ = false;
            addTerms(i);
            addFigures(i);
            addOutputs(i);
            addInputs(i);
        }
    }

    // False where more than the border is needed: to find the demand sources of what is taken for water, and what goes
    // to components that cannot be balanced.
    bool isEnough() const { return isEnough_; }
    std::set<OutputPort> take() { return std::move(outputs_); }

  private:
    void addAmounts(int component, Amounts amounts) {
        for (const int index : network_.inputs(component)) {
            const Connection& connection = network_.connection(index);
            if (has(amounts, connection.toPort == 2 ? Amounts::in2 : Amounts::in1)) add(connection);
        }
        const Type& type = network_.type(component);
        if (has(amounts, Amounts::out1) && !type.out.empty()) outputs_.insert({component, 1});
        if (has(amounts, Amounts::out2) && type.out.size() > 1) outputs_.insert({component, 2});
    }

    void addTerms(int component) {
        const BalanceIdentity& balance = network_.type(component).balance;
        for (const BalanceTerm& term : balance.terms) {
            const bool staysInside = term.term == Term::released || term.term == Term::served ||
                                     term.term == Term::ended || (term.term == Term::added && !balance.wiring.copies);
            if (!staysInside && term.isOf(network_.component(component).code)) {
                addAmounts(component, term.reads | term.less);
            }
        }
        if (balance.stored == Stored::underWay) addAmounts(component, Amounts::in1 | Amounts::out1);
        if (balance.wiring.suppliesAsWater) isEnough_ = false;
    }

    void addFigures(int component) {
        const Type& type = network_.type(component);
        if (type.service.unmet) {
            addAmounts(component, type.service.reads | (type.service.demandPort == 2 ? Amounts::in2 : Amounts::in1));
        }
        if (type.peakOf == 1) addAmounts(component, Amounts::out1);
    }

    void addOutputs(int component) {
        for (int port = 1; port <= network_.outputs(component); ++port) {
            const Outlet& outlet = outlets_.of(component, port);
            const bool isReport = network_.type(component).isReport(port) && !outlet.connections.empty();
            if (outlet.isEnd() || outlet.connections.size() > 1 || isReport) outputs_.insert({component, port});
        }
    }

    void addInputs(int component) {
        for (const int index : network_.inputs(component)) {
            const Connection& connection = network_.connection(index);
            const Carries sends = network_.carriers().ofOutput(connection.from, connection.fromPort);
            const Carries takes = network_.carriers().ofInput(component, connection.toPort);
            if (sends == Carries::demand && takes == Carries::water) isEnough_ = false;
            const bool isAlike = sends == takes && network_.component(component).code != code::kWaterBody &&
                                 &multiplicity_.of(connection.from) == &multiplicity_.into(component);
            if (!isAlike) add(connection);
        }
    }

    void add(const Connection& connection) { outputs_.insert({connection.from, connection.fromPort}); }

    const NetworkView& network_;
    const Outlets& outlets_;
    const Multiplicity& multiplicity_;
    bool isEnough_ = true;
    std::set<OutputPort> outputs_;
};

// All but reports of a part of another output that lead nowhere.
std::set<OutputPort> allThatCount(const NetworkView& network, const Outlets& outlets) {
    std::set<OutputPort> outputs;
    for (const OutputPort output : allOutputs(network.model())) {
        const bool isReport = network.type(output.component).isReport(output.port);
        if (!isReport || outlets.of(output.component, output.port).counts) outputs.insert(output);
    }
    return outputs;
}

}  // namespace

bool AccountNeeds::contains(OutputPort output) const {
    return std::binary_search(outputs.begin(), outputs.end(), output);
}

AccountNeeds needsOf(const Model& model, SeriesValues& series, const std::vector<OutputPort>& asked, bool forBalance) {
    const NetworkView network(model);
    const Outlets outlets(network);
    const std::set<OutputPort> whole = allThatCount(network, outlets);
    const std::set<OutputPort> wanted(asked.begin(), asked.end());
    const auto planned = [&](bool isWhole, const std::set<OutputPort>& needed) {
        std::set<OutputPort> all = needed;
        all.insert(wanted.begin(), wanted.end());
        return AccountNeeds{isWhole,
                            {needed.begin(), needed.end()},
                            planRecordings(model, network.network(), {all.begin(), all.end()})};
    };
    const bool isAsked = std::includes(wanted.begin(), wanted.end(), whole.begin(), whole.end());
    if (forBalance || isAsked) return planned(true, whole);
    Border border(network, outlets, Multiplicity(network, series));
    if (!border.isEnough()) return planned(true, whole);
    AccountNeeds needs = planned(false, border.take());
    const bool isRefused = std::any_of(needs.plan.refused.begin(), needs.plan.refused.end(),
                                       [&](const Refusal& refusal) { return needs.contains(refusal.output); });
    return isRefused ? planned(true, whole) : needs;
}

}  // namespace kesto
