// What --strict adds to a command: warnings fail it.
#pragma once

#include <iosfwd>
#include <string_view>

#include "diagnostics.h"

namespace kesto {

// True when no warning stands but those that the model or --accept accepts; else names the others.
bool passesStrictly(std::string_view command, const Diagnostics& diagnostics, std::ostream& errors);

}  // namespace kesto
