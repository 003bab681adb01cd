// The JSON Schema of the model file, for editors that complete and check TOML. It says what is in the catalogue;
// what depends on several places of a model (names that must exist, series that a group must have) is left to the
// checks.
#pragma once

#include <string>

namespace kesto {

std::string modelSchema();

}  // namespace kesto
