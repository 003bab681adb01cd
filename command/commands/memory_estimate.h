// How much memory a run takes, as `kesto check` says it.
#pragma once

#include <string>

#include "model.h"
#include "recordings.h"

namespace kesto {

// Bytes of a run that records what the plan says.
double expectedMemory(const Model& model, const RecordingPlan& plan);

std::string bytesToText(double count);  // "8.2 GB"

}  // namespace kesto
