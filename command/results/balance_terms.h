// What each type gains, loses and ends by design in a step, computed from its signals, states and series, not from what
// the engine booked.
#pragma once

#include <cmath>
#include <vector>

#include "series.h"

namespace kesto {

// One step of one component; of signals the quantities.
struct StepSignals {
    double in[2] = {0, 0};
    double out[2] = {0, 0};
    double before = 0, after = 0;  // the stored amount, in the unit of the state
};

struct StepTerms {
    double gain = 0;  // comes from outside the network, or from nothing by design
    double loss = 0;  // leaves it by design
    double ends = 0;  // reaches those it was meant for
};

class BalanceTerms {
  public:
    BalanceTerms(const Model& model, const Component& component, SeriesValues& series);
    StepTerms at(std::size_t step, const StepSignals& signals) const;

    double storageFactor() const;  // litres for each unit of the state

  private:
    double parameter(int number) const;
    double valueOf(const std::shared_ptr<const Floats>& values, std::size_t step) const;
    std::shared_ptr<const Floats> ofGroup(SeriesKind kind) const;
    StepTerms soil(std::size_t step, const StepSignals& signals) const;
    double evapotranspiration(std::size_t step) const;
    double seepage(double volume) const;

    const Model& model_;
    const Component& component_;
    SeriesValues& series_;
    std::vector<double> parameters_;
    double size_, dt_;
    std::shared_ptr<const Floats> rain_, temperature_, lowest_, highest_, own_;
};

}  // namespace kesto
