// The folder of results that a run leaves.
#pragma once

#include <string>
#include <vector>

#include "evaluation.h"
#include "read_options.h"
#include "results.h"

namespace kesto {

// Writes all files of a run into a folder that exists, in the format "csv" or "netcdf", in place of those of an earlier
// run, and returns their paths. `read` is what the model was read with. Throws std::runtime_error when
// one cannot be written.
std::vector<std::string> writeResults(const Results& results, const Evaluation& evaluation, const ReadOptions& read,
                                      const std::string& format, const std::string& folder);

}  // namespace kesto
