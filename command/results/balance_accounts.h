// What each component of a run took in, put out, gained, lost and stored.
#pragma once

#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "balance_steps.h"
#include "carriers.h"
#include "results.h"

namespace kesto {

// Sums over all steps, of the component's own kind: of water the water, of a demand the demand.
struct Account {
    std::string notBalanced;  // why not; empty: it is
    double in = 0, out = 0;
    double gain = 0, loss = 0, ends = 0;
    double stored = 0;  // change
    double tolerance = 0;
};

class Accounts {
  public:
    Accounts(const Results& results, const RecordingPlan& plan, SeriesValues& series);

    const Account& of(int component) const { return accounts_[at(component)]; }
    const Carriers& carriers() const { return carriers_; }

    // Connections into a component; how many leave one of its outputs. Ports count from 1.
    const std::vector<int>& inputs(int component) const { return inputs_[at(component)]; }
    int receivers(int component, int port) const { return receivers_[at(component)][at(port) - 1]; }

    // True when what leaves an output is of the component's own kind, and no report of a part of another output.
    bool isCounted(int component, int port) const;

    double total(int component, int port) const;

  private:
    // Signals that enter or leave one component, with the number of their port from 0.
    struct Line {
        const Signal* signals;
        std::size_t port;
        bool isCounted;
    };
    struct Lines {
        std::vector<Line> in, out;
    };

    const Signal* signalsOf(int component, int port) const;
    bool isReport(int component, int port) const;
    std::string missing(int component) const;
    std::string whyMissing(int component, int port) const;
    Lines linesOf(int component) const;
    Account accountOf(int component) const;
    void addSteps(int component, const Lines& lines, Account& account) const;
    double underWay(int component, const Lines& lines, const Account& account) const;
    static std::pair<double, double> readSignals(const Lines& lines, std::size_t step, BalanceStep& signals);

    const Results& results_;
    const Model& model_;
    const RecordingPlan& plan_;
    SeriesValues& series_;
    Network network_;
    Carriers carriers_;
    std::map<std::string_view, const float*> states_;
    std::vector<double> insolation_;
    std::vector<std::vector<int>> inputs_;
    std::vector<std::array<int, 2>> receivers_;
    std::vector<Account> accounts_;
};

}  // namespace kesto
