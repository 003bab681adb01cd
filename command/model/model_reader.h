// Reads a model: the TOML file and the tables that it names.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "diagnostics.h"
#include "model.h"
#include "model_document.h"
#include "overrides.h"
#include "read_options.h"

namespace kesto {

// A model as far as it could be understood; it is fit to be run only when the diagnostics hold no error. None when the
// file cannot be read at all.
std::optional<Model> readModel(const std::string& path, Diagnostics& diagnostics, const ReadOptions& options = {});

// The same of a document that has been read; `more` wins over the options.
Model readModel(const ModelDocument& document, const ReadOptions& options, const std::vector<Override>& more,
                Diagnostics& diagnostics);

// Where a scenario of the model sets values.
std::set<KeyPath> pathsOfScenario(const ModelDocument& document, const std::string& scenario);

}  // namespace kesto
