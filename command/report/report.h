// One page, complete in itself, with what a run gave.
#pragma once

#include <string>
#include <string_view>

#include "page_data.h"

namespace kesto {

// Reads the results of a folder and gives the page as HTML. `drawing` is a picture of the network as SVG, or empty.
std::string reportPage(const PageSource& source, const std::string& drawing);

// The page with other data, such as those of a comparison.
std::string filledPage(std::string_view title, const std::string& drawing, const nlohmann::ordered_json& data);

// False where the command was built without the libraries that draw them; the page then holds tables alone.
bool hasCharts();

}  // namespace kesto
