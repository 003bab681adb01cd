#include "balance_accounts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace kesto {

namespace {

constexpr double kRounding = 1.0 / (1 << 22);  // four roundings to single precision, each of half a last place
constexpr float kAbsent = -1.0F;               // a mark, never an amount

double amount(const Signal& signal) {
    return signal.quantity == kAbsent ? 0 : static_cast<double>(signal.quantity);
}

// What a step adds to a component's account and takes from it, by design.
struct StepTerms {
    double gain = 0, loss = 0, ends = 0;
};

// A demand meets the loss on its way as what is asked for on top.
StepTerms termsOf(const BalanceIdentity& balance, bool isDemand, const BalanceStep& step) {
    StepTerms sums;
    for (const BalanceTerm& term : balance.terms) {
        const double litres = term.litres(step);
        if (comesIn(term.term) || (isDemand && (term.term == Term::lost || term.term == Term::used))) {
            sums.gain += litres;
        } else if (term.term == Term::served || term.term == Term::ended) {
            sums.ends += litres;
        } else {
            sums.loss += litres;
        }
    }
    return sums;
}

int outputs(const Component& component) {
    return static_cast<int>(component.type->out.size());
}

}  // namespace

Accounts::Accounts(const Results& results, const RecordingPlan& plan, SeriesValues& series)
    : results_(results),
      model_(*results.model),
      plan_(plan),
      series_(series),
      network_(model_),
      carriers_(model_, network_),
      insolation_(insolationOf(model_.simulation)),
      receivers_(model_.components.size()) {
    for (const State& state : results.states) {
        if (state.kind == SeriesKind::storage) states_[state.name] = state.values;
    }
    for (int i = 0; i < static_cast<int>(model_.components.size()); ++i) {
        inputs_.push_back(network_.inputs(i));
        for (const int index : inputs_.back()) {
            const Connection& connection = model_.connections[at(index)];
            ++receivers_[at(connection.from)][at(connection.fromPort) - 1];
        }
    }
    for (int i = 0; i < static_cast<int>(model_.components.size()); ++i) {
        accounts_.push_back(accountOf(i));
    }
}

const Signal* Accounts::signalsOf(int component, int port) const {
    const Flow* flow = results_.find({component, port});
    return flow ? flow->signals : nullptr;
}

bool Accounts::isReport(int component, int port) const {
    return port == 2 && model_.components[at(component)].type->balance.secondIsReport;
}

bool Accounts::isCounted(int component, int port) const {
    return carriers_.ofOutput(component, port) == carriers_.of(component) && !isReport(component, port);
}

double Accounts::total(int component, int port) const {
    const Signal* signals = signalsOf(component, port);
    double sum = 0;
    for (std::size_t step = 0; step < results_.steps; ++step) {
        sum += amount(signals[step]);
    }
    return sum;
}

// Why a component cannot be balanced; empty when it can.
std::string Accounts::missing(int component) const {
    for (int port = 1; port <= outputs(model_.components[at(component)]); ++port) {
        if (!isReport(component, port) && !signalsOf(component, port)) return whyMissing(component, port);
    }
    for (const int index : inputs(component)) {
        const Connection& connection = model_.connections[at(index)];
        if (!signalsOf(connection.from, connection.fromPort)) return whyMissing(connection.from, connection.fromPort);
    }
    return {};
}

std::string Accounts::whyMissing(int component, int port) const {
    const std::string name = outputName(model_.components[at(component)], port);
    for (const Refusal& refusal : plan_.refused) {
        if (refusal.output == OutputPort{component, port}) {
            return fmt::format("\"{}\" cannot be recorded unchanged: {}", name, refusal.reason);
        }
    }
    return fmt::format("\"{}\" is not recorded", name);
}

Accounts::Lines Accounts::linesOf(int component) const {
    Lines lines;
    for (const int index : inputs(component)) {
        const Connection& connection = model_.connections[at(index)];
        const int port = connection.toPort == 2 ? 2 : 1;
        lines.in.push_back({signalsOf(connection.from, connection.fromPort), at(port) - 1,
                            carriers_.ofInput(component, port) == carriers_.of(component)});
    }
    for (int port = 1; port <= outputs(model_.components[at(component)]); ++port) {
        if (isReport(component, port)) continue;
        lines.out.push_back({signalsOf(component, port), at(port) - 1, isCounted(component, port)});
    }
    // What a logger or a water body received.
    if (const Signal* own = signalsOf(component, 0)) lines.out.push_back({own, 0, false});
    return lines;
}

std::pair<double, double> Accounts::readSignals(const Lines& lines, std::size_t step, BalanceStep& signals) {
    double in = 0, out = 0;
    signals.in[0] = signals.in[1] = signals.out[0] = signals.out[1] = 0;
    for (const Line& line : lines.in) {
        const double value = amount(line.signals[step]);
        signals.in[line.port] += value;
        if (line.isCounted) in += value;
    }
    for (const Line& line : lines.out) {
        signals.out[line.port] = amount(line.signals[step]);
        if (line.isCounted) out += signals.out[line.port];
    }
    return {in, out};
}

Account Accounts::accountOf(int component) const {
    Account account;
    const Component& one = model_.components[at(component)];
    if (!one.type->balance.isOfWater()) {
        account.notBalanced = "no water passes it";
        return account;
    }
    account.notBalanced = missing(component);
    if (!account.notBalanced.empty()) return account;
    const Lines lines = linesOf(component);
    addSteps(component, lines, account);
    if (one.type->balance.stored == Stored::underWay) account.stored = underWay(component, lines, account);
    return account;
}

void Accounts::addSteps(int index, const Lines& lines, Account& account) const {
    const Component& component = model_.components[at(index)];
    const BalanceIdentity& balance = component.type->balance;
    const bool isDemand = carriers_.of(index) == Carries::demand;
    BalanceSteps steps(model_, component, series_, insolation_);
    const double factor = steps.litresPerUnit();
    const auto state = states_.find(component.name);
    const float* stored = state == states_.end() ? nullptr : state->second;
    BalanceStep& now = steps.current();
    now.copies = 2;
    const SourceIndex initial = component.series[SeriesKind::storage];
    if (stored && initial >= 0) now.after = static_cast<double>(series_.of(initial)->front());
    const double first = now.after;
    for (std::size_t step = 0; step < results_.steps; ++step) {
        steps.read(step);
        now.before = now.after;
        if (stored) now.after = static_cast<double>(stored[step]);
        const auto [in, out] = readSignals(lines, step, now);
        const StepTerms by = termsOf(balance, isDemand, now);
        account.in += in;
        account.out += out;
        account.gain += by.gain;
        account.loss += by.loss;
        account.ends += by.ends;
        account.tolerance += kRounding * (std::abs(in) + std::abs(out) + std::abs(by.gain) + std::abs(by.loss) +
                                          std::abs(by.ends) + factor * (std::abs(now.before) + std::abs(now.after)));
    }
    account.stored = factor * (now.after - first);
}

// A delay holds what came in its last steps, on a loop one step more.
double Accounts::underWay(int index, const Lines& lines, const Account& account) const {
    const auto held = static_cast<std::size_t>(std::lround(model_.components[at(index)].size));
    const double seen = account.in - account.out;
    double best = std::numeric_limits<double>::infinity();
    for (const std::size_t steps : {held, held + 1}) {
        double sum = 0;
        for (std::size_t step = results_.steps - std::min(steps, results_.steps); step < results_.steps; ++step) {
            BalanceStep signals;
            sum += readSignals(lines, step, signals).first;
        }
        if (!(std::abs(seen - best) <= std::abs(seen - sum))) best = sum;
    }
    return best;
}

}  // namespace kesto
