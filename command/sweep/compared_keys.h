// What the members of a sweep were given under a key, as numbers in one unit where that is what they are.
#pragma once

#include <string>
#include <vector>

#include "comparison.h"

namespace kesto {

// `unit` is that of the key in the model; empty: it has none, or the sweep does not say.
ComparedSweep::Key comparedKey(const std::string& name, const std::string& unit, std::vector<std::string> texts);

}  // namespace kesto
