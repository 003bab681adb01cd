// One page, complete in itself, with what a run gave.
#pragma once

#include <string>
#include <vector>

#include "written_files.h"

namespace kesto {

// Reads the results of a folder and gives the page as HTML. `drawing` is a picture of the network as SVG, or text that
// says why there is none.
// `changes` says which files are others than those that were run.
std::string reportPage(const std::string& folder, const StoredResults& stored, const std::string& drawing,
                       const std::vector<std::string>& changes);

// False where the command was built without the library that draws them; the page then holds tables alone.
bool hasCharts();

}  // namespace kesto
