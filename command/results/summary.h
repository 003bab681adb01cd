// What a run has come to, for a person to read.
#pragma once

#include <string>

#include "evaluation.h"
#include "results.h"

namespace kesto {

std::string summaryOf(const Results& results, const Evaluation& evaluation);

// What went wrong, when, and in which component; empty when nothing did.
std::string failureOf(const Results& results);

double total(const Flow& flow, std::size_t steps);
double total(const float* values, std::size_t steps);

}  // namespace kesto
