// The tables of series in a NetCDF file of results: dimensions and variables, as results.nc and the parts of a sweep
// name them.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "catalogue.h"

namespace kesto {

// Series of one unit that share a dimension.
struct SeriesTable {
    std::string_view dimension;
    std::string_view variable;
    std::string_view meaning;  // of a value, before the length of time that it holds for
    std::string_view unit;
    std::string_view quality;         // variable of the flows' quality
    std::optional<SeriesKind> state;  // none: the series are flows

    bool isOfFlows() const { return !state; }
};

inline constexpr std::array<SeriesTable, 5> kSeriesTables{{
    {"flow", "quantity", "amount of the", "L", "quality", std::nullopt},
    {"depth_flow", "depth", "depth of the", "mm", "depth_quality", std::nullopt},
    {"store", "storage", "stored water at the end of the", "L", "", SeriesKind::storage},
    {"depth_store", "storage_depth", "stored depth at the end of the", "mm", "", SeriesKind::storage},
    {"quality_store", "stored_quality", "stored quality at the end of the", "", "", SeriesKind::quality},
}};

// The mark of a signal without quality.
inline constexpr float kNoQuality = -1.0F;

constexpr std::string_view unitOrOne(std::string_view unit) {
    return unit.empty() || unit == "cost" ? "1" : unit;
}

}  // namespace kesto
