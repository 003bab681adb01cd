// What the terms of a component's balance are computed from.
#pragma once

#include <memory>
#include <vector>

#include "recorded.h"

namespace kesto {

// What holds in all steps.
class BalanceInputs {
  public:
    BalanceInputs(const Recorded& recorded, int component);
    BalanceInputs(const BalanceInputs&) = delete;
    BalanceInputs& operator=(const BalanceInputs&) = delete;

    double parameter(int number) const { return constant_.parameter(number); }
    double litresPerUnit() const;  // of the state

  protected:
    BalanceStep constant_;

  private:
    const Stored stored_;
    std::vector<double> parameters_;
};

// Step by step.
class BalanceSteps : public BalanceInputs {
  public:
    // With the signals of these connections into the component, and of its outputs, as far as they are recorded.
    BalanceSteps(const Recorded& recorded, int component, const std::vector<int>& inputs, int copies = 1);

    // Steps in turn, from the first.
    const BalanceStep& next();

  private:
    struct Line {
        const Signal* signals;
        std::size_t port;
    };
    void addLine(std::vector<Line>& lines, const Signal* signals, int port);

    std::vector<Line> in_, out_;
    const float* stored_;
    const std::vector<double>& insolation_;
    std::shared_ptr<const Floats> rain_, temperature_, lowest_, highest_, given_;
    std::size_t step_ = 0;
    BalanceStep& current_ = constant_;
};

}  // namespace kesto
