// The page that `kesto report` fills: its frame, one style and one script, and the licences of the libraries within;
// the build makes a source of them.
#pragma once

#include <string_view>

namespace kesto::page {

// Without charts the licences are empty.
extern const std::string_view kHtml, kStyle, kScript, kLicences;

}  // namespace kesto::page
