// What must hold for a model to run: found out before the engine is asked, so that its own terse errors are never what
// a person sees first.
#pragma once

#include "diagnostics.h"
#include "model.h"
#include "series.h"

namespace kesto {

class Network;

void checkModel(const Model& model, SeriesValues& series, Diagnostics& diagnostics);

// Its parts, each in a file of its own.
void checkComponents(const Model& model, SeriesValues& series, Diagnostics& diagnostics);
void checkNetwork(const Model& model, Diagnostics& diagnostics);
void checkWiring(const Model& model, const Network& network, Diagnostics& diagnostics);
void checkDoubts(const Model& model, Diagnostics& diagnostics);
void checkRanges(const Model& model, SeriesValues& series, Diagnostics& diagnostics);
void checkSeries(const Model& model, SeriesValues& series, Diagnostics& diagnostics);
void checkValues(const Model& model, SeriesValues& series, Diagnostics& diagnostics);

}  // namespace kesto
