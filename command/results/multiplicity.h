// How many of each component a model stands for: the product of the multipliers downstream of it, along the first
// connection listed of each component, as the engine has it for the potentials.
#pragma once

#include <vector>

#include "network_view.h"
#include "series.h"

namespace kesto {

// Constant, or a value for each step.
struct Factor {
    double constant = 1;
    std::vector<double> series = {};
    double greatest = 1;  // absolute

    double at(std::size_t step) const { return series.empty() ? constant : series[step]; }
    bool operator==(const Factor&) const = default;
};

class Multiplicity {
  public:
    Multiplicity(const NetworkView& network, SeriesValues& series);

    // Equal factors are the same object.
    const Factor& of(int component) const { return factors_[at(of_[at(component)])]; }

    // As often as what enters a component counts: at a multiplier as often as what leaves it, and times its own series.
    const Factor& into(int component) const { return factors_[at(into_[at(component)])]; }

  private:
    int firstDownstream(int component, std::vector<int>& known) const;
    int factorOfMultiplier(int multiplier, const std::vector<int>& first, std::vector<int>& known);
    int indexOf(Factor factor);

    const NetworkView& network_;
    SeriesValues& series_;
    std::vector<Factor> factors_;
    std::vector<int> of_, into_;
};

}  // namespace kesto
