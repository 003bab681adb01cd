// Conversion of what a person writes ("2 m3") into the unit that the engine works in (2000 L).
//
// By hand: the table is short and closed, and messages list the units that fit; a library of units takes any.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace kesto {

// value in `to` = factor x value in `from` + offset
struct Conversion {
    double factor = 1;
    double offset = 0;
    bool isIdentity() const { return factor == 1 && offset == 0; }
};

// None when `from` is not a unit that can be turned into `to`.
std::optional<Conversion> conversion(std::string_view from, std::string_view to);

// Units that can be turned into `to`, itself first.
std::vector<std::string_view> unitsFor(std::string_view to);

}  // namespace kesto
