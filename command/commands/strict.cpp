#include "strict.h"

#include <fmt/format.h>

#include <iostream>
#include <set>

namespace kesto {

bool passesStrictly(std::string_view command, const Diagnostics& diagnostics) {
    const std::vector<const Diagnostic*> warnings = diagnostics.unaccepted();
    if (warnings.empty()) return true;
    std::set<std::string> names;
    for (const Diagnostic* warning : warnings) {
        names.insert(fmt::format("{}{}{}", warning->code, warning->component.empty() ? "" : " ", warning->component));
    }
    const std::string list = fmt::format("\"{}\"", fmt::join(names, "\", \""));
    std::cerr << fmt::format("kesto {}: error: --strict: {} {} not accepted: {}\n", command, warnings.size(),
                             warnings.size() == 1 ? "warning is" : "warnings are", list);
    return false;
}

}  // namespace kesto
