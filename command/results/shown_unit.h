// Figures for people: in units that suit their size, in columns. Files and JSON have them in the engine's units.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kesto {

// How much a person is shown: what fits a screen, or all.
enum class Detail { brief, full };

// Of litres and kilowatt-hours by their size, of fractions per cent.
struct ShownUnit {
    std::string_view unit;
    double factor = 1;
    int decimals = 1;
};

ShownUnit shownUnit(std::string_view unit, double largest);
std::string shownNumber(double value, const ShownUnit& shown);

// "364.2 m3", in the unit that suits this value; "not a number" where it is none.
std::string shown(double value, std::string_view unit);

// The first two columns to the left, the others to the right.
std::string alignedRows(const std::vector<std::vector<std::string>>& rows);

// A name that leaves room on a line for what is said of it.
std::string shownName(std::string_view name, Detail detail);

}  // namespace kesto
