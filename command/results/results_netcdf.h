// Writes results as NetCDF-4 by the CF conventions: one file with flows and their qualities, states and potentials over
// a time axis, compressed, the values bit for bit.
#pragma once

#include <string>

#include "evaluation.h"
#include "results.h"

namespace kesto {

// Writes results.nc into a folder and returns its path. Throws std::runtime_error when it cannot be written.
std::string writeNetcdf(const Results& results, const Evaluation& evaluation, int compression,
                        const std::string& folder);

// Throws std::runtime_error when the NetCDF library cannot be loaded.
void requireNetcdf();
bool hasNetcdf();  // this command, by the way it was built

// Variable of a potential that is booked in this unit: depths, as of soil, stand apart from volumes.
std::string potentialVariable(const PotentialInfo& potential, std::string_view unit);

}  // namespace kesto
