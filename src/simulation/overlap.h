// Whether memory of the host that a run writes to, the states of the components, is also other memory of the host.
#ifndef KESTO_SIMULATION_OVERLAP_H
#define KESTO_SIMULATION_OVERLAP_H

#include <vector>

#include "components/model.h"

// Whether any state that the host gives, written or not, shares memory with the record or with a table that look-ups
// read. Then a look-up may find something else in each step, down to the type of a component.
bool statesLieInTables(const AUEglobals& record);

// What the states that are written share memory with: with other series, so that what one form writes another may find
// in the same step, or with the temperatures, which decide how far blocks may go.
enum class Overlap { None, OfSeries, OfTemperatures };
Overlap overlapOfWritten(const AUEglobals& record, const std::vector<Notes::Access>& accesses);

#endif
