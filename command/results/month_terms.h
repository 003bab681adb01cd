// The terms of balances by month.
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "component_sums.h"

namespace kesto {

using Months = std::vector<double>;

template <class Value>
Months sumOfSteps(const RunMonths& months, const Value& valueOf) {
    Months sums(months.count(), 0);
    for (std::size_t month = 0; month < sums.size(); ++month) {
        for (std::size_t step = months.begin(month); step < months.end(month); ++step) {
            sums[month] += valueOf(step);
        }
    }
    return sums;
}

// Of an output that was recorded, as often as the factor says.
Months monthsOf(const Recorded& recorded, const RunMonths& months, int component, int port, const Factor& factor);

void add(Months& sums, const Months& more);

class MonthTerms {
  public:
    MonthTerms(const Recorded& recorded, const Multiplicity& multiplicity, const ComponentSums& sums,
               const RunMonths& months)
        : recorded_(recorded), multiplicity_(multiplicity), sums_(sums), months_(months) {}

    // Of all components together, each as often as it counts; nothing where some of it was not recorded.
    std::optional<Months> of(Term term);

    // What a component that serves a demand could not serve.
    std::optional<Months> unmet(int component);
    std::optional<Months> demand(int component);

  private:
    bool addTerm(int component, const BalanceTerm& term, Months& sums);
    bool addAmounts(int component, Amounts amounts, double times, Months& sums);
    bool addFlow(int component, int port, double times, Months& sums);
    const Months& rainOf(int component);

    const Recorded& recorded_;
    const Multiplicity& multiplicity_;
    const ComponentSums& sums_;
    const RunMonths& months_;
    std::map<int, Months> rain_;  // of groups
};

}  // namespace kesto
