// What --record asks for: all, none, or a list of components and ports.
#pragma once

#include <string>
#include <vector>

#include "diagnostics.h"
#include "recordings.h"

namespace kesto {

// "all", "none", or "tank:overflow,roof": a component alone stands for all its outputs.
std::vector<OutputPort> parseRecordChoice(const Model& model, const std::string& text, Diagnostics& diagnostics);

// Outputs that were asked for by name must be recorded; of all outputs, those that cannot be are only reported.
void reportRefusals(const Model& model, const RecordingPlan& plan, bool byName, Diagnostics& diagnostics);

}  // namespace kesto
