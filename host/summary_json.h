// The summary for other programs.
#pragma once

#include <string>

#include "balance.h"
#include "results.h"

namespace kesto {

// One JSON object: the run and how it ended, totals of flows and potentials, the service of tanks. What is not a number
// is null.
std::string summaryJson(const Results& results, const Balance* balance = nullptr);

}  // namespace kesto
