// Names and titles reach terminals, tables and pictures; none of these has a use for control characters, and a terminal
// obeys them.
#pragma once

#include "diagnostics.h"
#include "value.h"

namespace kesto {

// Reports each key and text in the tree of a value that holds a control character.
void refuseControlCharacters(const Value& value, Diagnostics& diagnostics);

}  // namespace kesto
