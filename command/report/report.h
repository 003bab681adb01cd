// One page, complete in itself, with what a run gave.
#pragma once

#include <string>

#include "page_data.h"

namespace kesto {

// Reads the results of a folder and gives the page as HTML. `drawing` is a picture of the network as SVG, or text that
// says why there is none.
std::string reportPage(const PageSource& source, const std::string& drawing);

// False where the command was built without the library that draws them; the page then holds tables alone.
bool hasCharts();

}  // namespace kesto
