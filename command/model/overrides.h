// Values given from outside in place of the model file's: --set tank.size=3000, and scenarios.
#pragma once

#include <string>
#include <vector>

#include "diagnostics.h"
#include "key_path.h"

namespace kesto {

struct Override {
    KeyPath path;
    Value value;     // its place says who gave it
    Place keyPlace;  // where the path stands
    bool used = false;
};

// As written in an argument, which messages name.
Override overrideOf(KeyPath path, const std::string& value, const std::string& argument);

// All that it holds has this place.
void setPlace(Value& value, const Place& place);

// Reports what is not fit to be understood at all: control characters, and text that nests too deep.
void refuseUnfit(const Override& one, const std::string& text, Diagnostics& diagnostics);

// Values are read as TOML, and as plain text where they are not TOML.
std::vector<Override> parseOverrides(const std::vector<std::string>& texts, Diagnostics& diagnostics);

// The table at a path with what is to be set in it; later ones win.
Value withOverrides(const Value& table, const KeyPath& target, std::vector<Override>& overrides);

// [series], of which there may be several: a key is set where it stands already.
Value withSeriesOverrides(const Value& series, std::vector<Override>& overrides, Diagnostics& diagnostics);

// Overrides that met nothing are errors; `targets` are what there is.
void reportUnused(const std::vector<Override>& overrides, const std::vector<std::string>& targets,
                  Diagnostics& diagnostics);

}  // namespace kesto
