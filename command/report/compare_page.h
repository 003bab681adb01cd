// The page that shows runs side by side, or the members of a sweep: like that of one run complete in itself, and of a
// size that does not grow with the networks.
#pragma once

#include <string>

#include "comparison.h"

namespace kesto {

// `comparison` holds all figures, also those that are alike; `sweep` may be null. Reads series of the runs' folders.
// Throws std::runtime_error when one cannot be read.
std::string comparePage(const Comparison& comparison, const ComparedSweep* sweep);

}  // namespace kesto
