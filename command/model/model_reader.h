// Reads a model: the TOML file and the tables that it names.
#pragma once

#include <optional>
#include <string>

#include "diagnostics.h"
#include "model.h"
#include "read_options.h"

namespace kesto {

// A model as far as it could be understood; it is fit to be run only when the diagnostics hold no error. None when the
// file cannot be read at all.
std::optional<Model> readModel(const std::string& path, Diagnostics& diagnostics, const ReadOptions& options = {});

}  // namespace kesto
