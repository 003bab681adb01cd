// Text inside HTML, and inside labels of Graphviz that are written like it.
#pragma once

#include <string>
#include <string_view>

namespace kesto {

std::string escapeMarkup(std::string_view text);

}  // namespace kesto
