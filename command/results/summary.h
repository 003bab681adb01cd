// What a run has come to, for a person to read.
#pragma once

#include <string>

#include "evaluation.h"
#include "results.h"

namespace kesto {

// In brief it fits a screen, whatever the size of the network.
std::string summaryOf(const Results& results, const Evaluation& evaluation, Detail detail);

// What went wrong, when, and in which component; empty when nothing did.
std::string failureOf(const Results& results);

}  // namespace kesto
