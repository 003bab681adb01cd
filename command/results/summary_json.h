// The summary for other programs.
#pragma once

#include <string>
#include <vector>

#include "evaluation.h"
#include "results.h"
#include "written_files.h"

namespace kesto {

class Diagnostics;

// What a run took, which is another matter each time.
struct RunCosts {
    double readSeconds = 0;    // and to check
    double engineSeconds = 0;  // with the record's set-up
    double writeSeconds = 0;   // with sums and balances
    double peakBytes = 0;
};

// One JSON object: the run and how it ended, totals of flows and potentials, account, figures, the service of tanks.
// What is not a number is null. `files` are those that stand beside it.
std::string summaryJson(const Results& results, const Evaluation& evaluation, const std::vector<WrittenFile>& files,
                        const RunCosts* costs = nullptr);

// Of a model that was not run, since it has errors: the same keys, so far as they are known.
std::string refusalJson(const std::string& model, const Diagnostics& diagnostics);

}  // namespace kesto
