// Loops in the paths of a run, cut open.
#pragma once

#include "network_paths.h"

namespace kesto {

// Water that a user lets go, and that is used again, ends there and comes anew.
void cutLoops(NetworkPaths& paths);

}  // namespace kesto
