// The account, the figures and the balance of a run in its NetCDF file.
#pragma once

#include "evaluation.h"
#include "netcdf_file.h"

namespace kesto {

void writeEvaluation(NetcdfFile& file, const Evaluation& evaluation);

}  // namespace kesto
