// Faults for programs: the same rows in summary.json, in results and in what `check --json` prints.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "diagnostics.h"

namespace kesto {

// The errors alone; warnings and notes. Rows in order of file and line, each with `code`, `severity`, `text`, `file`,
// `line`, `column` and `component`, null where there is none, and `accepted`.
nlohmann::ordered_json errorRows(const Diagnostics& diagnostics);
nlohmann::ordered_json warningRows(const Diagnostics& diagnostics);

}  // namespace kesto
