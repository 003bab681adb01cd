// A run whose figures alone are of interest: of a scenario beside another run.
#pragma once

#include <functional>

#include "load.h"
#include "money.h"

namespace kesto {

struct Evaluation;
struct Results;

// Runs a model that is fit to be run, and has what it left looked at. It records no more than its account needs; with
// `isOverseen` all that `kesto run` does, and the evaluation has an overview.
void runBeside(LoadedModel& loaded, bool isOverseen,
               const std::function<void(const Results&, const Evaluation&)>& look);

// Runs a baseline that is fit to be run. Throws std::runtime_error that says why the run failed.
NetworkCosts costsOfBaseline(LoadedModel& baseline);

}  // namespace kesto
