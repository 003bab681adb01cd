// Reads a TOML file into a Value.
#pragma once

#include <optional>
#include <string>

#include "diagnostics.h"
#include "value.h"

namespace kesto {

std::optional<Value> readTomlFile(const std::string& path, Diagnostics& diagnostics);
std::optional<Value> readTomlText(const std::string& text, const std::string& name, Diagnostics& diagnostics);

}  // namespace kesto
