// What a run has recorded, by component: signals, states, and their sums over all steps.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "account_needs.h"
#include "network_view.h"
#include "results.h"
#include "run_months.h"
#include "series.h"

namespace kesto {

class Recorded : public NetworkView {
  public:
    // `months` of the run by which flows are summed up, too; null: none. They must outlive this.
    Recorded(const Results& results, const AccountNeeds& needs, SeriesValues& series,
             const RunMonths* months = nullptr);

    SeriesValues& series() const { return series_; }
    std::size_t steps() const { return results_.steps; }
    Day dayOf(std::size_t step) const { return results_.dayOf(step); }
    bool isWhole() const { return needs_.isWhole; }

    // Of an output, counted from 1; 0: what a recorder received. Null, or a sum of nothing: not recorded.
    const Signal* signals(int index, int port) const;
    Sum sum(int index, int port) const;

    // Of each month, where those were asked for; nothing: not recorded.
    std::span<const double> byMonth(int index, int port) const;

    // Why an output that is needed was not recorded; empty: it was, or is not needed.
    std::string whyMissing(int index, int port) const;

    // The stored amount, in the unit of the state; null: it has none.
    const float* storage(int index) const { return storages_[at(index)]; }
    double storedAtFirst(int index) const;

    // Of a series of the component's group; null: it has none.
    std::shared_ptr<const Floats> ofGroup(int index, SeriesKind kind) const;
    Sum rain(int index) const;

    // Above the atmosphere, in each step [kJ/m2]; empty where the model has no latitude.
    const std::vector<double>& insolation() const { return insolation_; }

  private:
    const Results& results_;
    const AccountNeeds& needs_;
    SeriesValues& series_;
    std::vector<const float*> storages_;
    std::vector<Sum> rains_;  // of groups
    std::vector<double> insolation_;
    std::size_t months_;
    std::vector<double> byMonth_;  // of each flow one month after the other
};

}  // namespace kesto
