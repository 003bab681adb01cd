#include "shown_unit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "display.h"

namespace kesto {

namespace {

struct Scale {
    std::string_view unit;
    double from;  // on the scale of the engine's unit
    std::string_view shown;
    double factor;
};
constexpr Scale kScales[] = {{"L", 1e11, "GL", 1e-9},   {"L", 1e8, "ML", 1e-6},    {"L", 1e4, "m3", 1e-3},
                             {"kWh", 1e8, "GWh", 1e-6}, {"kWh", 1e5, "MWh", 1e-3}, {"-", 0, "%", 100}};

constexpr std::size_t kNameInBrief = 32;

int decimalsOf(std::string_view unit, double largest) {
    if (unit == "d") return 0;
    if (unit.ends_with("/m3")) return 2;
    return largest > 0 && largest < 1 ? 3 : 1;
}

}  // namespace

ShownUnit shownUnit(std::string_view unit, double largest) {
    for (const Scale& scale : kScales) {
        if (unit == scale.unit && largest >= scale.from) return {scale.shown, scale.factor};
    }
    return {unit, 1, decimalsOf(unit, largest)};
}

std::string shown(double value, std::string_view unit) {
    if (std::isnan(value)) return "not a number";
    if (value == 0) return fmt::format("0 {}", unit);
    const double size = std::abs(value);
    if (size < 0.001 || size >= 1e15) return fmt::format("{:.4g} {}", value, unit);
    const ShownUnit best = shownUnit(unit, size);
    return fmt::format("{} {}", shownNumber(value, best), best.unit);
}

std::string shownName(std::string_view name, Detail detail) {
    return detail == Detail::brief ? shortened(name, kNameInBrief) : std::string(name);
}

std::string shownNumber(double value, const ShownUnit& shown) {
    if (std::isnan(value)) return "-";
    const std::string text = fmt::format("{:.{}f}", value * shown.factor, shown.decimals);
    const bool isZero = text.find_first_not_of("-0.") == std::string::npos;
    return isZero && text.starts_with('-') ? text.substr(1) : text;
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
