// A run whose figures alone are of interest: of a scenario beside another run.
#pragma once

#include <functional>
#include <string>

#include "load.h"

namespace kesto {

struct Evaluation;
struct Results;

// Runs a model that is fit to be run, without recording more than its account needs, and has what it left looked at.
// With `isOverseen` the evaluation has an overview.
void runBeside(LoadedModel& loaded, bool isOverseen,
               const std::function<void(const Results&, const Evaluation&)>& look);

}  // namespace kesto
