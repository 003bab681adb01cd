// The units that numbers have which are given by a key: what --set tank.size=3000 is in.
#pragma once

#include <string>

#include "key_path.h"
#include "model.h"

namespace kesto {

// As a person writes it, "L" or "EUR/m3"; empty where the key has none, or its unit is not one for all that read it.
std::string unitAt(const KeyPath& path, const Model& model);

}  // namespace kesto
