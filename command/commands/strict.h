// What --strict adds to a command: warnings fail it.
#pragma once

#include <string_view>

#include "diagnostics.h"

namespace kesto {

// True when no warning stands but those that the model or --accept accepts; else names the others on stderr.
bool passesStrictly(std::string_view command, const Diagnostics& diagnostics);

}  // namespace kesto
