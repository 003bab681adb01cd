// What the terms of a component's balance are computed from, step by step.
#pragma once

#include <memory>
#include <vector>

#include "balance_terms.h"
#include "series.h"

namespace kesto {

// Insolation above the atmosphere [kJ/m2] in each step of a run; empty where the model has no latitude.
std::vector<double> insolationOf(const Simulation& simulation);

class BalanceSteps {
  public:
    BalanceSteps(const Model& model, const Component& component, SeriesValues& series,
                 const std::vector<double>& insolation);

    // The inputs of a step; its signals and states are left as they were.
    void read(std::size_t step);
    BalanceStep& current() { return current_; }

    double litresPerUnit() const;  // of the state

  private:
    std::shared_ptr<const Floats> ofGroup(SeriesKind kind) const;

    const Model& model_;
    const Component& component_;
    SeriesValues& series_;
    const std::vector<double>& insolation_;
    std::vector<double> parameters_;
    BalanceStep current_;
    std::shared_ptr<const Floats> rain_, temperature_, lowest_, highest_, given_;
};

}  // namespace kesto
