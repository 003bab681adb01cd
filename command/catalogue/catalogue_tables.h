// The catalogue's rows by family; catalogue.cpp puts them together.
#pragma once

#include "catalogue.h"

namespace kesto::tables {

std::vector<Type> usersAndSurfaces();
std::vector<Type> stores();
std::vector<Type> treatmentAndLinks();
std::vector<Type> routing();
std::vector<Type> energyUnits();

BalanceIdentity balanceOf(std::string_view type);

// A port with another quality than is usual for what it carries.
inline Port withQuality(Quality quality, Port port) {
    port.quality = quality;
    return port;
}

// Needs and parameters that many types share.
inline const SeriesNeed kOwnVolume{SeriesKind::storage, Filing::own, true};
inline const SeriesNeed kOwnDepth{SeriesKind::storage, Filing::own, true, false, "mm"};
inline const SeriesNeed kOwnQuality{SeriesKind::quality, Filing::own, true};
inline const SeriesNeed kOwnTracedQuality{SeriesKind::quality, Filing::own, true, true};
inline SeriesNeed ofGroup(SeriesKind kind) {
    return {kind, Filing::group};
}
inline SeriesNeed ofItsOwn(SeriesKind kind, std::string_view unit = {}, std::string_view alias = {},
                           std::string_view meaning = {}) {
    return {kind, Filing::own, false, false, unit, alias, meaning};
}

inline Parameter capacityCost(std::string_view unit) {
    return {12, "capacity_cost", unit, "capacity potential booked each step, used or not", 0};
}
inline Parameter operationCost(std::string_view unit) {
    return {13, "operation_cost", unit, "operation potential", 0};
}
inline Parameter energyPerVolume() {
    return {3, "energy_per_volume", "kWh/L", "energy spent on each litre", 0};
}
inline Parameter waterQuality(std::string_view what) {
    return {25, "water_quality", "", what, 0};
}
inline Parameter lossFraction(std::string_view what) {
    return {2, "loss_fraction", "-", what};
}

}  // namespace kesto::tables
