// The parts of the data of the page that shows runs side by side.
#pragma once

#include "comparison.h"
#include "page_parts.h"

namespace kesto {

// What all runs have over time: months of the network, of groups and of types, then days of series in their folders.
// What differs between runs comes first.
Json overlaysOf(const std::vector<ComparedRun>& runs);

// Models, data, options and design that the runs, by their names, and the sweep were made of.
Json comparedMade(const Comparison& comparison, const std::vector<std::string>& names, const ComparedSweep* sweep);

}  // namespace kesto
