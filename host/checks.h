// What must hold for a model to run: found out before the engine is asked, so that its own terse errors are never what
// a person sees first.
#pragma once

#include "diagnostics.h"
#include "model.h"
#include "series.h"

namespace kesto {

void checkModel(const Model& model, SeriesValues& series, Diagnostics& diagnostics);

// Its parts, each in a file of its own.
void checkComponents(const Model& model, SeriesValues& series, Diagnostics& diagnostics);
void checkNetwork(const Model& model, Diagnostics& diagnostics);
void checkDoubts(const Model& model, Diagnostics& diagnostics);
void checkValues(const Model& model, SeriesValues& series, Diagnostics& diagnostics);

// The source that meets a need of a component, its own or its group's; kNoSource when there is none.
SourceIndex sourceFor(const Model& model, const Component& component, const SeriesNeed& need);

// True when the engine will read this series in a run of this model.
bool isNeeded(const Model& model, const SeriesNeed& need);

// 'component "wc"' for messages.
std::string nameOf(const Component& component);

}  // namespace kesto
