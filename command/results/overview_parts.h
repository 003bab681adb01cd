// Parts of the overview of a run.
#pragma once

#include "overview.h"

namespace kesto {

// What was used, and the rows of months and years.
void addMonths(const Recorded& recorded, const Results& results, const Multiplicity& multiplicity,
               const ComponentSums& sums, const WaterPaths& paths, const Account& account, Overview& overview);

// Sums of types and groups.
void addSums(const Recorded& recorded, const Results& results, const Multiplicity& multiplicity, Overview& overview);

// Which series the page has by day.
void addShown(const Recorded& recorded, const Results& results, const std::vector<OutputPort>& kept,
              Overview& overview);

}  // namespace kesto
