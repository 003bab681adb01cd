// Writes results as NetCDF-4 by the CF conventions: one file with flows and their qualities, states and potentials over
// a time axis, compressed, the values bit for bit.
#pragma once

#include <string>

#include "balance.h"
#include "model_reader.h"
#include "results.h"

namespace kesto {

// Writes results.nc into a folder, which is made when it is missing, and returns its path. `read` is what the model was
// read with; `balance` may be null. Throws std::runtime_error when it cannot be written.
std::string writeNetcdf(const Results& results, const Balance* balance, const ReadOptions& read,
                        const std::string& folder);

}  // namespace kesto
