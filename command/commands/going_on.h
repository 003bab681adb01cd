// A run that goes on from a day of an earlier one.
#pragma once

#include <string>
#include <vector>

#include "diagnostics.h"
#include "model.h"
#include "series.h"

namespace kesto {

// Takes the states of the day before the start out of results for the initial ones. What is missing is reported.
void takeStates(Model& model, const std::string& results, Diagnostics& diagnostics);

// Reports what the states do not hold: `recorded` are the outputs that somebody will look at.
void checkMemory(const Model& model, const std::vector<OutputPort>& recorded, bool approximate,
                 Diagnostics& diagnostics);

// Reports series that are read of the day before the start, and have no value there.
void checkDayBefore(const Model& model, SeriesValues& series);

}  // namespace kesto
