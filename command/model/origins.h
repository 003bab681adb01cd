// Where signals come from: which output made the water, or the demand, that arrives somewhere, and which one left it
// without a quality, also behind components that pass on what reaches them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "network.h"

namespace kesto {

enum class Trait : std::uint8_t { water, demand, noQuality, spillQuality };
inline constexpr std::size_t kTraits = 4;

class Origins {
  public:
    Origins(const Model& model, const Network& network);

    // The output where what this one sends got the trait; none: it sends nothing of that kind.
    std::optional<OutputPort> of(Trait trait, const OutputPort& output) const;

    bool has(Trait trait, const OutputPort& output) const { return of(trait, output).has_value(); }

  private:
    using Receivers = std::vector<std::vector<int>>;  // of each component: connections that count
    void spread(Trait trait, const Receivers& receivers);

    const Model& model_;
    std::array<std::vector<int>, kTraits> origins_;  // by output: that of the origin; -1: none
};

}  // namespace kesto
