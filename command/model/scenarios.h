// [scenarios.NAME]: values of the model under a name, with the keys that --set takes.
#pragma once

#include <string>
#include <vector>

#include "overrides.h"
#include "reader_parts.h"

namespace kesto {

// Notes all scenarios in the model and gives the values of each one that is asked for, in that order.
std::vector<std::vector<Override>> readScenarios(Reading& reading, const Value* table,
                                                 const std::vector<std::string>& asked);

}  // namespace kesto
