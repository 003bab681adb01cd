// From which demand sources a demand comes, by way of components that pass it on.
#pragma once

#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "component_sums.h"

namespace kesto {

class DemandSources {
  public:
    using Shares = std::vector<std::pair<int, double>>;  // demand sources with a part of what they ask for

    DemandSources(const Recorded& recorded, const Multiplicity& multiplicity, const ComponentSums& sums)
        : recorded_(recorded), multiplicity_(multiplicity), sums_(sums) {}

    // Those from which all of a demand comes, each with its part: what passes several is theirs in parts. Nothing where
    // others ask for some of it, or where it goes round a loop.
    std::optional<Shares> of(int sender, double litres) const;

  private:
    bool isSource(int component) const;
    bool passesDemand(int component) const;
    std::vector<std::pair<const Connection*, double>> askersOf(int component) const;
    std::optional<std::map<int, int>> upstreamOf(int sender) const;

    const Recorded& recorded_;
    const Multiplicity& multiplicity_;
    const ComponentSums& sums_;
};

}  // namespace kesto
