// Figures for people: in units that suit their size, in columns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kesto {

// Of litres and kilowatt-hours by their size, of fractions per cent.
struct ShownUnit {
    std::string_view unit;
    double factor = 1;
    int decimals = 1;
};

ShownUnit shownUnit(std::string_view unit, double largest);
std::string shownNumber(double value, const ShownUnit& shown);

// The first two columns to the left, the others to the right.
std::string alignedRows(const std::vector<std::vector<std::string>>& rows);

}  // namespace kesto
