// What each component of a run took, gave, lost and stored by design: the terms of its balance, summed over all steps.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "balance_terms.h"
#include "multiplicity.h"
#include "outlets.h"
#include "recorded.h"

namespace kesto {

using TermSums = std::array<double, kTerms>;

struct ComponentSum {
    std::string notBalanced;                  // why not; empty: it is
    TermSums one{}, all{};                    // of the component alone, and as often as it counts
    double storedByOne = 0, storedByAll = 0;  // change
    double scaled = 0;                        // of a multiplier: what it adds to senders that count as often as it says
    double tolerance = 0;                     // error of one that rounding to single precision explains

    double of(Term term) const { return one[static_cast<std::size_t>(term)]; }
    double ofAll(Term term) const { return all[static_cast<std::size_t>(term)]; }
};

class ComponentSums {
  public:
    ComponentSums(const Recorded& recorded, const Outlets& outlets, const Multiplicity& multiplicity);

    const ComponentSum& of(int component) const { return sums_[at(component)]; }
    bool isBalanced(int component) const { return of(component).notBalanced.empty(); }

  private:
    std::string missing(int component) const;
    ComponentSum sumOf(int component) const;
    void addTotals(int component, ComponentSum& sum) const;
    void addSteps(int component, ComponentSum& sum) const;
    void addStored(int component, ComponentSum& sum) const;
    void addScaled(int component, ComponentSum& sum) const;
    void addUnderWay(int component, ComponentSum& sum) const;
    Sum amountOf(int component, Amounts amount) const;
    double magnitudeOfSignals(int component) const;

    const Recorded& recorded_;
    const Outlets& outlets_;
    const Multiplicity& multiplicity_;
    std::vector<ComponentSum> sums_;
};

// The sum over all steps of what an output sent, as often as the factor says.
double totalOf(const Recorded& recorded, int component, int port, const Factor& factor);

}  // namespace kesto
