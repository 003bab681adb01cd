#include "shown_unit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kesto {

ShownUnit shownUnit(std::string_view unit, double largest) {
    if (unit == "L") {
        if (largest >= 1e8) return {"ML", 1e-6};
        if (largest >= 1e4) return {"m3", 1e-3};
    }
    if (unit == "kWh" && largest >= 1e5) return {"MWh", 1e-3};
    if (unit == "-") return {"%", 100};
    return {unit, 1, unit == "d" ? 0 : 1};
}

std::string shownNumber(double value, const ShownUnit& shown) {
    return std::isnan(value) ? "-" : fmt::format("{:.{}f}", value * shown.factor, shown.decimals);
}

std::string alignedRows(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths(rows.front().size(), 0);
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line = fmt::format("  {:<{}}  {:<{}}", row[0], widths[0], row[1], widths[1]);
        for (std::size_t i = 2; i < row.size(); ++i) {
            line += fmt::format("  {:>{}}", row[i], widths[i]);
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    return text;
}

}  // namespace kesto
