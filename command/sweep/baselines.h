// The runs that members of a sweep are compared with: each with the values of its member, and over these the scenario
// that [economics] names as the baseline. Members that differ only in what that scenario sets share one.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "design.h"
#include "model_document.h"
#include "money.h"
#include "read_options.h"

namespace kesto {

class Baselines {
  public:
    Baselines() = default;

    // Of members `first` to `last`.
    Baselines(const ModelDocument& document, const ReadOptions& read, const Design& design, std::size_t first,
              std::size_t last);

    // The first member with the same baseline; none: it is compared with nothing.
    std::optional<std::size_t> of(std::size_t member) const {
        return same_.empty() ? std::nullopt : std::optional(same_[member - first_]);
    }

  private:
    std::size_t first_ = 0;
    std::vector<std::size_t> same_;  // by member, from the first
};

// What the run of a baseline has come to.
struct BaselineCosts {
    std::optional<NetworkCosts> costs;  // none: the model of the member names no baseline
    std::string failure;                // why it cannot be run; empty: it can
};

std::string toBytes(const BaselineCosts& baseline);
BaselineCosts baselineCostsFrom(std::string_view bytes);

}  // namespace kesto
