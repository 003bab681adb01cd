#include "units.h"

namespace kesto {

namespace {

struct Row {
    std::string_view from, to;
    double factor;
    double offset = 0;
};

constexpr Row kRows[] = {
    {"cm", "mm", 10},
    {"m", "mm", 1000},
    {"in", "mm", 25.4},
    {"L/m2", "mm", 1},
    {"ha", "m2", 10000},
    {"km2", "m2", 1e6},
    {"m3", "L", 1000},
    {"ML", "L", 1e6},
    {"hm3", "L", 1e9},
    {"m3/d", "L/d", 1000},
    {"L/s", "L/d", 86400},
    {"m3/s", "L/d", 86400000},
    {"m/s", "km/h", 3.6},
    {"kn", "km/h", 1.852},
    {"mph", "km/h", 1.609344},
    {"degF", "degC", 1 / 1.8, -32 / 1.8},
    {"K", "degC", 1, -273.15},
    {"MWh", "kWh", 1000},
    {"Wh", "kWh", 0.001},
    {"kWh/m3", "kWh/L", 0.001},
    {"Wh/L", "kWh/L", 0.001},
    {"1/week", "1/d", 1.0 / 7},
    {"1/year", "1/d", 1.0 / 365},
    {"%", "-", 0.01},
    {"-", "%", 100},
    {"cm", "m", 0.01},
    {"mm", "m", 0.001},
    {"mm/d", "L/m2/d", 1},
    {"years", "a", 1},
    {"/L", "/m3", 1000},
    {"/ML", "/m3", 0.001},
    {"/m3", "/L", 0.001},
    {"/ML", "/L", 1e-6},
    {"/ha", "/m2", 1e-4},
    {"/MWh", "/kWh", 0.001},
};

}  // namespace

std::optional<Conversion> conversion(std::string_view from, std::string_view to) {
    if (from == to) return Conversion{};
    for (const Row& row : kRows) {
        if (row.from == from && row.to == to) return Conversion{row.factor, row.offset};
    }
    return std::nullopt;
}

std::vector<std::string_view> unitsFor(std::string_view to) {
    std::vector<std::string_view> units{to};
    for (const Row& row : kRows) {
        if (row.to == to) units.push_back(row.from);
    }
    return units;
}

}  // namespace kesto
