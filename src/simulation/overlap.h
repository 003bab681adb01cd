// Whether memory of the host that a run writes to is also other memory of the host.
#ifndef KESTO_SIMULATION_OVERLAP_H
#define KESTO_SIMULATION_OVERLAP_H

#include <vector>

#include "components/model.h"

// Whether any series that is written shares memory with another series, a table or the record. Such a run must go step
// by step through the list of components: what one writes another may find anywhere.
bool writesOverlap(const AUEglobals& record, const std::vector<Notes::Access>& accesses);

#endif
