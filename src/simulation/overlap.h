// Whether the states of the components, which a run writes, share memory with other arrays of the host.
#ifndef KESTO_SIMULATION_OVERLAP_H
#define KESTO_SIMULATION_OVERLAP_H

#include <vector>

#include "components/model.h"

// Whether any state, written or not, shares memory with the record or with a table that look-ups read. Then a look-up
// may find something else in each step, even another type of component.
bool statesLieInTables(const AUEglobals& record);

// What the states that are written share memory with: other series, so that one form may find in the same step what
// another has written; or temperatures, which decide how far blocks may go.
enum class Overlap { None, OfSeries, OfTemperatures };
Overlap overlapOfWritten(const AUEglobals& record, const std::vector<Notes::Access>& accesses);

#endif
