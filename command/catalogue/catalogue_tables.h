// The catalogue's rows by field; catalogue.cpp puts them together.
#pragma once

#include "catalogue.h"

namespace kesto::tables {

std::vector<Type> users();
std::vector<Type> surfaces();
std::vector<Type> stores();
std::vector<Type> treatment();
std::vector<Type> supply();
std::vector<Type> links();
std::vector<Type> routing();
std::vector<Type> qualityUnits();
std::vector<Type> energyUnits();

// A port with another quality than is usual for what it carries.
inline Port withQuality(Quality quality, Port port) {
    port.quality = quality;
    return port;
}

inline Port leavesQuality(Port port) {
    port.isQualityLeft = true;
    return port;
}

// Needs, ports and parameters that many types share.
inline const SeriesNeed kOwnVolume{SeriesKind::storage, Filing::own, true};
inline const SeriesNeed kOwnDepth{SeriesKind::storage, Filing::own, true, false, "mm"};
inline const SeriesNeed kOwnQuality{SeriesKind::quality, Filing::own, true};
inline const SeriesNeed kOwnTracedQuality{SeriesKind::quality, Filing::own, true, true};
inline SeriesNeed ofGroup(SeriesKind kind) {
    return {kind, Filing::group};
}
inline SeriesNeed ofItsOwn(SeriesKind kind, std::string_view unit = {}, std::string_view alias = {},
                           std::string_view meaning = {}, std::optional<Range> range = {}) {
    return {kind, Filing::own, false, false, unit, alias, meaning, range};
}

inline const Port kInflow{"inflow", Carries::water, "water that flows in"};
inline const Port kOutflow = withQuality(Quality::passed, {"outflow", Carries::water, "water passed on"});
inline const Port kDemand{"demand", Carries::demand, "water asked of it"};
inline const Port kDeficit{"deficit", Carries::demand, "part of the demand that it could not serve"};
inline const Port kOverflow{"overflow", Carries::water, "water that it could not hold"};
inline const Port kArrives{"inflow", Carries::same, "what arrives"};
inline Port passes(std::string_view name, std::string_view meaning) {
    return {name, Carries::same, meaning};
}

inline Parameter capacityCost(std::string_view unit) {
    return {
        spec::kCapacityCost, "capacity_cost", unit, "capacity potential booked each step, used or not", range::kAny, 0};
}
inline Parameter operationCost(std::string_view unit) {
    return {spec::kOperationCost, "operation_cost", unit, "operation potential", range::kAny, 0};
}
inline Parameter energyPerVolume() {
    return {spec::kEnergyPerVolume, "energy_per_volume", "kWh/L", "energy spent on each litre", range::kAny, 0};
}
inline Parameter waterQuality(std::string_view what) {
    return {spec::kWaterQuality, "water_quality", "", what, range::kQuality, 0};
}
inline Parameter lossFraction(std::string_view what, const Range& range = range::kFraction) {
    return {spec::kLossFraction, "loss_fraction", "-", what, range};
}

// Terms of a balance: an amount, an amount less another, a share of an amount, or what a function computes.
inline BalanceTerm whole(Term term, std::string_view meaning, Amounts of) {
    return {term, meaning, nullptr, of};
}
inline BalanceTerm difference(Term term, std::string_view meaning, Amounts of, Amounts less) {
    return {term, meaning, nullptr, of, less};
}
inline BalanceTerm share(Term term, std::string_view meaning, Amounts of, int parameter) {
    return {term, meaning, nullptr, of, Amounts::none, parameter};
}
inline BalanceTerm computed(Term term, std::string_view meaning, double (*litres)(const BalanceStep&),
                            Amounts reads = Amounts::none) {
    return {term, meaning, litres, reads};
}

}  // namespace kesto::tables
