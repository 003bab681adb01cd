#include "key_units.h"

#include <algorithm>
#include <array>

#include "reader_parts.h"

namespace kesto {

namespace {

struct KeyUnit {
    std::string_view key, unit;
};
constexpr std::array kSimulation{KeyUnit{"latitude", "degrees"}, KeyUnit{"time_step", "d"}};
constexpr std::array kPrices{KeyUnit{"water_price", "/m3"}, KeyUnit{"sewage_price", "/m3"},
                             KeyUnit{"energy_price", "/kWh"}};
constexpr std::string_view kInitial = "initial_";

template <std::size_t size>
std::string_view unitIn(const std::array<KeyUnit, size>& keys, std::string_view key) {
    const auto found = std::find_if(keys.begin(), keys.end(), [&](const KeyUnit& one) { return one.key == key; });
    return found == keys.end() ? std::string_view{} : found->unit;
}

// What brands and components cost; `sizeUnit` is that of their sizes.
std::string unitOfCapital(std::string_view key, std::string_view sizeUnit, const std::string& currency) {
    if (key == "life") return "a";
    if (key == "capital_per_size" && !sizeUnit.empty()) return currency + "/" + std::string(sizeUnit);
    return currency;
}

std::string unitOfComponent(std::string_view key, const Type& type, const std::string& currency) {
    if (key == "size") return std::string(type.size.unit);
    if (isKeyOfCapital(key)) return unitOfCapital(key, type.size.unit, currency);
    for (const SeriesNeed& need : type.series) {
        if (!need.alias.empty() && need.alias == key) return std::string(ownUnit(type, need.kind));
    }
    if (key.starts_with(kInitial)) key.remove_prefix(kInitial.size());
    const auto kind = findSeriesKind(key);
    return kind ? std::string(ownUnit(type, *kind)) : std::string();
}

std::string unitOfBrand(std::string_view key, const std::vector<const Type*>& types, const std::string& currency) {
    std::vector<std::string> units;
    const auto given = wholeNumber(key);
    const auto number = given ? given : parameterNumber(key);
    for (const Type* type : types) {
        if (isKeyOfCapital(key)) {
            units.push_back(unitOfCapital(key, type->size.unit, currency));
        } else if (const Parameter* parameter = number ? findParameter(*type, *number) : nullptr) {
            units.emplace_back(parameter->unit);
        }
    }
    const bool isOne = std::all_of(units.begin(), units.end(), [&](const auto& unit) { return unit == units.front(); });
    return isOne && !units.empty() ? units.front() : std::string();
}

std::string unitOfEconomics(std::string_view key, const std::string& currency) {
    if (key == "horizon") return "a";
    if (key == "interest") return "-";
    const std::string_view price = unitIn(kPrices, key);
    return price.empty() ? std::string() : currency + std::string(price);
}

// Of a series that a group gives, or [series] gives to all.
std::string unitOfSeries(std::string_view key) {
    if (key.starts_with("use_")) key = "uses";
    const auto kind = findSeriesKind(key);
    return kind ? std::string(info(*kind).unit) : std::string();
}

std::string ownUnitAt(const KeyPath& path, const Model& model) {
    const std::string &table = path[0], &name = path[1], &currency = model.economics.currency;
    if (table == "simulation") return std::string(unitIn(kSimulation, name));
    if (table == "economics") return unitOfEconomics(name, currency);
    if (table == "series") return unitOfSeries(name);
    if (path.size() < 3) return {};
    if (table == "groups") return unitOfSeries(path[2]);
    if (table == "brands") {
        const int brand = model.findBrand(name);
        return brand < 0 ? std::string() : unitOfBrand(path[2], typesOfBrands(model)[at(brand)], currency);
    }
    const int component = model.findComponent(name);
    return component < 0 ? std::string() : unitOfComponent(path[2], *model.components[at(component)].type, currency);
}

}  // namespace

std::string unitAt(const KeyPath& path, const Model& model) {
    if (path.size() < 2) return {};
    if (path.back() == "scale") return "-";
    return ownUnitAt(path, model);
}

}  // namespace kesto
