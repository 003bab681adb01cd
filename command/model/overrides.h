// Values given on the command line instead of the model file's: --set tank.size=3000.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "diagnostics.h"
#include "value.h"

namespace kesto {

// The target is a component's name, "brands.NAME", "groups.NAME" or "simulation".
struct Override {
    std::string target;
    std::string key;
    Value value;
    bool used = false;
};

// As written in an argument, which messages name.
Override overrideOf(std::string target, std::string key, const std::string& value, const std::string& argument);

// Values are read as TOML, and as plain text where they are not TOML.
std::vector<Override> parseOverrides(const std::vector<std::string>& texts, Diagnostics& diagnostics);

// The table with what is to be set in it.
Value withOverrides(const Value& table, std::string_view target, std::vector<Override>& overrides);

// Overrides that met nothing are errors; `targets` are what there is.
void reportUnused(const std::vector<Override>& overrides, const std::vector<std::string>& targets,
                  Diagnostics& diagnostics);

}  // namespace kesto
