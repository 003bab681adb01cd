// The parts of the page that `kesto report` fills, as they stand in the folder report and in the package of uPlot; the
// build makes a source of them.
#pragma once

#include <string_view>

namespace kesto::page {

extern const std::string_view kHtml, kCss, kScript, kUplotScript, kUplotCss, kUplotLicence;

}  // namespace kesto::page
