#include "balance.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "balance_terms.h"
#include "network.h"

namespace kesto {

namespace {

constexpr double kRounding = 1.0 / (1 << 22);  // four roundings to single precision, each of half a last place
constexpr float kAbsent = -1.0F;               // a mark, never an amount

std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

// What one component comes to.
struct Account {
    bool isBalanced = false;
    double gain = 0, loss = 0, ends = 0;
    double stored = 0;  // change
    double in = 0, out = 0;
    double tolerance = 0;
};

class Accountant {
  public:
    Accountant(const Results& results, const RecordingPlan& plan, SeriesValues& series)
        : results_(results), model_(*results.model), plan_(plan), series_(series), network_(model_) {
        for (const Flow& flow : results.flows) {
            flows_[{flow.component, flow.port}] = &flow;
        }
        for (const State& state : results.states) {
            if (state.kind == SeriesKind::storage) states_[state.name] = state.values;
        }
        listInputs();
        findCarriers();
    }

    Balance balance() {
        Balance result;
        for (std::size_t i = 0; i < model_.components.size(); ++i) {
            accounts_.push_back({});
            rows_.push_back(componentRow(static_cast<int>(i)));
        }
        result.rows.push_back(regionRow(BalanceRow::Level::network, model_.title, [](int) { return true; }));
        for (std::size_t group = 0; group < model_.groups.size(); ++group) {
            const auto isMember = [&](int component) {
                return model_.components[at(component)].group == static_cast<int>(group);
            };
            result.rows.push_back(regionRow(BalanceRow::Level::group, model_.groups[group].name, isMember));
        }
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            if (model_.components[i].type->balance.identity.empty()) continue;
            result.notBalanced += rows_[i].notBalanced.empty() ? 0 : 1;
            result.rows.push_back(std::move(rows_[i]));
        }
        return result;
    }

  private:
    void listInputs() {
        receivers_.resize(model_.components.size());
        for (std::size_t i = 0; i < model_.components.size(); ++i) {
            inputs_.push_back(network_.inputs(static_cast<int>(i)));
            for (const int connection : inputs_.back()) {
                ++receivers_[at(model_.connections[at(connection)].from)][at(portOf(connection))];
            }
        }
    }

    int portOf(int connection) const { return model_.connections[at(connection)].fromPort - 1; }

    Carries ofOutput(int component, int port) const {
        const std::vector<Port>& ports = model_.components[at(component)].type->out;
        if (at(port) >= ports.size()) return Carries::demand;
        const Carries carries = ports[at(port)].carries;
        return carries == Carries::same ? carriers_[at(component)] : carries;
    }

    Carries ofInput(int component, int port) const {
        const std::vector<Port>& ports = model_.components[at(component)].type->in;
        if (at(port) >= ports.size()) return carriers_[at(component)];
        const Carries carries = ports[at(port)].carries;
        return carries == Carries::same ? carriers_[at(component)] : carries;
    }

    // What passes anything on passes water as soon as some reaches it.
    void findCarriers() {
        for (const Component& component : model_.components) {
            const Carries own = component.type->balance.carries;
            carriers_.push_back(own == Carries::same ? Carries::demand : own);
        }
        for (bool changed = true; changed;) {
            changed = false;
            for (std::size_t i = 0; i < model_.components.size(); ++i) {
                if (carriers_[i] == Carries::water) continue;
                if (model_.components[i].type->balance.carries != Carries::same) continue;
                for (const int connection : inputs_[i]) {
                    if (ofOutput(model_.connections[at(connection)].from, portOf(connection)) != Carries::water) {
                        continue;
                    }
                    carriers_[i] = Carries::water;
                    changed = true;
                }
            }
        }
    }

    const Flow* flow(int component, int port) const {
        const auto found = flows_.find({component, port + 1});
        return found == flows_.end() ? nullptr : found->second;
    }

    // Why a component cannot be balanced; empty when it can.
    std::string missing(int index) const {
        const Component& component = model_.components[at(index)];
        for (int port = 0; port < static_cast<int>(component.type->out.size()); ++port) {
            if (port == 1 && component.type->balance.secondIsReport) continue;
            if (!flow(index, port)) return why(index, port);
        }
        for (const int connection : inputs_[at(index)]) {
            const int from = model_.connections[at(connection)].from;
            if (!flow(from, portOf(connection))) return why(from, portOf(connection));
        }
        return {};
    }

    std::string why(int component, int port) const {
        const std::string name = outputName(model_.components[at(component)], port + 1);
        for (const Refusal& refusal : plan_.refused) {
            if (refusal.output == OutputPort{component, port + 1}) {
                return fmt::format("\"{}\" cannot be recorded unchanged: {}", name, refusal.reason);
            }
        }
        return fmt::format("\"{}\" is not recorded", name);
    }

    static double amount(const Signal& signal) {
        return signal.quantity == kAbsent ? 0 : static_cast<double>(signal.quantity);
    }

    BalanceRow componentRow(int index) {
        const Component& component = model_.components[at(index)];
        BalanceRow row;
        row.name = component.name;
        row.type = component.type->name;
        row.carries = carriers_[at(index)];
        if (component.type->balance.identity.empty()) return row;
        row.notBalanced = missing(index);
        if (!row.notBalanced.empty()) return row;
        Account& account = accounts_.back();
        account.isBalanced = true;
        addSteps(index, account);
        if (component.code == code::kDelay) account.stored = underWay(index, account);
        row.in = account.in;
        row.gain = account.gain;
        row.out = account.out + account.ends;
        row.loss = account.loss;
        row.storageChange = account.stored;
        row.tolerance = account.tolerance;
        conclude(row);
        return row;
    }

    void addSteps(int index, Account& account) {
        const Component& component = model_.components[at(index)];
        const BalanceTerms terms(model_, component, series_);
        const double factor = terms.storageFactor();
        const auto state = states_.find(component.name);
        const float* stored = state == states_.end() ? nullptr : state->second;
        StepSignals signals;
        const SourceIndex initial = component.series[SeriesKind::storage];
        if (stored && initial >= 0) signals.after = static_cast<double>(series_.of(initial)->front());
        const double first = signals.after;
        for (std::size_t step = 0; step < results_.steps; ++step) {
            signals.before = signals.after;
            if (stored) signals.after = static_cast<double>(stored[step]);
            const auto [in, out] = readSignals(index, step, signals);
            const StepTerms by = terms.at(step, signals);
            account.in += in;
            account.out += out;
            account.gain += by.gain;
            account.loss += by.loss;
            account.ends += by.ends;
            account.tolerance +=
                kRounding * (std::abs(in) + std::abs(out) + std::abs(by.gain) + std::abs(by.loss) + std::abs(by.ends) +
                             factor * (std::abs(signals.before) + std::abs(signals.after)));
        }
        account.stored = factor * (signals.after - first);
    }

    // What the component takes in and puts out of its own kind: of water the water, of a demand the demand.
    std::pair<double, double> readSignals(int index, std::size_t step, StepSignals& signals) const {
        const Component& component = model_.components[at(index)];
        double in = 0, out = 0;
        signals.in[0] = signals.in[1] = signals.out[0] = signals.out[1] = 0;
        for (const int connection : inputs_[at(index)]) {
            const Connection& one = model_.connections[at(connection)];
            const int port = one.toPort == 2 ? 1 : 0;
            const double value = amount(flow(one.from, portOf(connection))->signals[step]);
            signals.in[port] += value;
            if (ofInput(index, port) == carriers_[at(index)]) in += value;
        }
        for (int port = 0; port < static_cast<int>(component.type->out.size()); ++port) {
            if (port == 1 && component.type->balance.secondIsReport) continue;
            signals.out[port] = amount(flow(index, port)->signals[step]);
            if (ofOutput(index, port) == carriers_[at(index)]) out += signals.out[port];
        }
        if (const Flow* own = flow(index, -1)) signals.out[0] = amount(own->signals[step]);  // of loggers and bodies
        return {in, out};
    }

    // A delay holds what came in its last steps, on a loop one step more.
    double underWay(int index, const Account& account) const {
        const auto held = static_cast<std::size_t>(std::lround(model_.components[at(index)].size));
        const double seen = account.in - account.out;
        double best = std::numeric_limits<double>::infinity();
        for (const std::size_t steps : {held, held + 1}) {
            double sum = 0;
            for (std::size_t step = results_.steps - std::min(steps, results_.steps); step < results_.steps; ++step) {
                StepSignals signals;
                sum += readSignals(index, step, signals).first;
            }
            if (!(std::abs(seen - best) <= std::abs(seen - sum))) best = sum;
        }
        return best;
    }

    // What crosses the border of a part of the network, and what goes on inside. Only water counts, and only components
    // that could be balanced belong to it.
    template <class IsMember>
    BalanceRow regionRow(BalanceRow::Level level, const std::string& name, const IsMember& isMember) const {
        BalanceRow row;
        row.level = level;
        row.name = name;
        const auto belongs = [&](int component) {
            return accounts_[at(component)].isBalanced && carriers_[at(component)] == Carries::water &&
                   isMember(component);
        };
        std::size_t members = 0;
        for (int to = 0; to < static_cast<int>(accounts_.size()); ++to) {
            if (belongs(to)) {
                ++members;
                addOwn(to, row);
            }
            for (const int connection : inputs_[at(to)]) {
                const int from = model_.connections[at(connection)].from;
                const bool leaves = belongs(from) && isCounted(from, portOf(connection));
                const bool enters =
                    belongs(to) && ofInput(to, model_.connections[at(connection)].toPort - 1) == Carries::water;
                if (leaves == enters) continue;
                const double sum = totalOf(from, portOf(connection));
                (enters ? row.in : row.out) += sum;
            }
        }
        if (members == 0) row.notBalanced = "no water passes through it that could be balanced";
        conclude(row);
        return row;
    }

    bool isCounted(int component, int port) const {
        return ofOutput(component, port) == carriers_[at(component)] &&
               !(port == 1 && model_.components[at(component)].type->balance.secondIsReport);
    }

    // An output that nobody receives leaves the network; one that several receive has been copied.
    void addOwn(int index, BalanceRow& row) const {
        const Account& account = accounts_[at(index)];
        row.gain += account.gain;
        row.loss += account.loss;
        row.out += account.ends;
        row.storageChange += account.stored;
        row.tolerance += account.tolerance;
        for (int port = 0; port < static_cast<int>(model_.components[at(index)].type->out.size()); ++port) {
            if (!isCounted(index, port)) continue;
            const int receivers = receivers_[at(index)][at(port)];
            if (receivers == 0) row.out += totalOf(index, port);
            if (receivers > 1) row.gain += (receivers - 1) * totalOf(index, port);
        }
    }

    double totalOf(int component, int port) const {
        double sum = 0;
        for (std::size_t step = 0; step < results_.steps; ++step) {
            sum += amount(flow(component, port)->signals[step]);
        }
        return sum;
    }

    static void conclude(BalanceRow& row) {
        row.error = row.in + row.gain - row.out - row.loss - row.storageChange;
        const double through =
            std::max({std::abs(row.in + row.gain), std::abs(row.out + row.loss), std::abs(row.storageChange)});
        row.relative = row.error == 0 ? 0 : std::abs(row.error) / through;
    }

    const Results& results_;
    const Model& model_;
    const RecordingPlan& plan_;
    SeriesValues& series_;
    Network network_;
    std::map<std::pair<int, int>, const Flow*> flows_;
    std::map<std::string, const float*> states_;
    std::vector<std::vector<int>> inputs_;
    std::vector<std::array<int, 2>> receivers_;
    std::vector<Carries> carriers_;
    std::vector<Account> accounts_;
    std::vector<BalanceRow> rows_;
};

}  // namespace

bool BalanceRow::isOff() const {
    return notBalanced.empty() && !(std::abs(error) <= tolerance);
}

bool Balance::isOff() const {
    return std::any_of(rows.begin(), rows.end(), [](const BalanceRow& row) { return row.isOff(); });
}

Balance balanceOf(const Results& results, const RecordingPlan& plan, SeriesValues& series) {
    return Accountant(results, plan, series).balance();
}

}  // namespace kesto
