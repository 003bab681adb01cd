#include "strict.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <set>

#include "display.h"

namespace kesto {

bool passesStrictly(std::string_view command, const Diagnostics& diagnostics, std::ostream& errors) {
    const std::vector<const Diagnostic*> warnings = diagnostics.unaccepted();
    if (warnings.empty()) return true;
    std::set<std::string> names;
    for (const Diagnostic* warning : warnings) {
        names.insert(fmt::format("{}{}{}", warning->code, warning->component.empty() ? "" : " ", warning->component));
    }
    const std::size_t shown = std::min<std::size_t>(names.size(), 20);
    std::string list = fmt::format(
        "\"{}\"", fmt::join(names.begin(), std::next(names.begin(), static_cast<std::ptrdiff_t>(shown)), "\", \""));
    if (names.size() > shown) list += fmt::format(" … and {} more", withThousands(names.size() - shown));
    errors << fmt::format("kesto {}: error: --strict: {} {} not accepted: {}\n", command, warnings.size(),
                          warnings.size() == 1 ? "warning is" : "warnings are", list);
    return false;
}

}  // namespace kesto
