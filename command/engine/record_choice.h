// What --record asks for: all, none, or a list of components and ports.
#pragma once

#include <string>
#include <vector>

#include "diagnostics.h"
#include "recordings.h"

namespace kesto {

// "all", "none", or "tank:overflow,roof": a component alone stands for all its outputs.
std::vector<OutputPort> parseRecordChoice(const Model& model, const std::string& text, Diagnostics& diagnostics);

// What is refused of the outputs that were asked for, where more is recorded than these.
std::vector<Refusal> refusedOf(const RecordingPlan& plan, const std::vector<OutputPort>& asked);

// Outputs that were asked for by name must be recorded; of all outputs, those that cannot be are only reported.
void reportRefusals(const Model& model, const std::vector<Refusal>& refused, bool byName, Diagnostics& diagnostics);

}  // namespace kesto
