// The catalogue for other programs, and for the tables of the documentation.
#pragma once

#include <string>
#include <vector>

#include "catalogue.h"

namespace kesto {

// A list with an object for each type.
std::string typesJson(const std::vector<Type>& types);

}  // namespace kesto
