// Writes results as CSV: one row a step, one column a series with its unit in the header. Numbers are written as the
// shortest text that reads back as the same bits.
#pragma once

#include <string>
#include <vector>

#include "results.h"

namespace kesto {

// Writes flows.csv, qualities.csv, states.csv and potentials.csv into a folder and
// returns the files that were written. Throws std::runtime_error when one cannot be written.
std::vector<std::string> writeCsv(const Results& results, const std::string& folder);

}  // namespace kesto
