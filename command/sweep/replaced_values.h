// What --set leaves of the scenarios of a sweep.
#pragma once

#include "design.h"
#include "read_options.h"

namespace kesto {

// A warning for each value of --set that replaces one of a scenario in the design: these members are less different
// than they look.
void warnOfReplaced(const ModelDocument& document, const ReadOptions& read, const Design& design,
                    Diagnostics& diagnostics);

}  // namespace kesto
