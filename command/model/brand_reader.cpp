// Reads brands: parameters that components share. One number can have other units in other types, so that a unit is
// understood by the types of the components that use the brand.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "number_format.h"
#include "reader_parts.h"
#include "units.h"

namespace kesto {

namespace {

struct UnitUse {
    std::string_view unit;
    const Type* type;
};

// The units that a parameter has in these types, each once.
std::vector<UnitUse> unitsIn(const std::vector<const Type*>& types, int number) {
    std::vector<UnitUse> uses;
    for (const Type* type : types) {
        const Parameter* parameter = findParameter(*type, number);
        if (!parameter) continue;
        const bool isNew =
            std::none_of(uses.begin(), uses.end(), [&](const UnitUse& use) { return use.unit == parameter->unit; });
        if (isNew) uses.push_back({parameter->unit, type});
    }
    return uses;
}

// Those that a parameter of this name has anywhere.
std::vector<UnitUse> unitsAnywhere(std::string_view name) {
    std::vector<UnitUse> uses;
    for (const Type& type : allTypes()) {
        for (const Parameter& parameter : type.parameters) {
            if (parameter.name != name) continue;
            const std::vector<UnitUse> one = unitsIn({&type}, parameter.number);
            const bool isNew =
                std::none_of(uses.begin(), uses.end(), [&](const UnitUse& use) { return use.unit == one[0].unit; });
            if (isNew) uses.push_back(one[0]);
        }
    }
    return uses;
}

// "2 cost/step": the unit, none where the text has none.
std::string_view unitOf(const Value& value) {
    const std::size_t blank = value.kind == Value::Kind::text ? value.text.rfind(' ') : std::string::npos;
    return blank == std::string::npos ? std::string_view{} : std::string_view(value.text).substr(blank + 1);
}

// The unit of their sizes; none where they differ.
std::string_view sizeUnitOf(const std::vector<const Type*>& types) {
    if (types.empty()) return {};
    const std::string_view unit = types.front()->size.unit;
    const bool isOne =
        std::all_of(types.begin(), types.end(), [&](const Type* type) { return type->size.unit == unit; });
    return isOne ? unit : std::string_view{};
}

// The number is in the unit of the type that reads it. A text has one unit: types that read it must agree on it.
std::optional<double> readParameter(const Value& value, const std::vector<UnitUse>& uses, bool isUsed,
                                    const std::string& what, Diagnostics& diagnostics) {
    const std::string_view unit = unitOf(value);
    if (uses.size() < 2 || unit.empty()) {
        return readQuantity(value, uses.size() == 1 ? uses.front().unit : "", what, diagnostics);
    }
    const UnitUse* meant = nullptr;
    bool fitsAll = true;
    for (const UnitUse& use : uses) {
        const auto found = conversion(unit, use.unit);
        if (found && !meant) meant = &use;
        fitsAll = fitsAll && found && found->isIdentity();
    }
    if (meant && (fitsAll || !isUsed)) return readQuantity(value, meant->unit, what, diagnostics);
    std::string units;
    for (const UnitUse& use : uses) {
        units +=
            fmt::format("{}{} for {}", units.empty() ? "" : ", ", use.unit.empty() ? "none" : use.unit, use.type->name);
    }
    diagnostics.error("wrong-value", value.place,
                      fmt::format("{} is {}, but its unit is {}; expected {}", what, describe(value), units,
                                  isUsed ? "a number, or a brand for each of these types" : "one of these"));
    return std::nullopt;
}

}  // namespace

std::optional<int> wholeNumber(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

BrandTypes typesOfBrands(const Model& model) {
    BrandTypes all(model.brands.size());
    for (const Component& component : model.components) {
        if (component.brand < 0) continue;
        std::vector<const Type*>& types = all[at(component.brand)];
        if (std::find(types.begin(), types.end(), component.type) == types.end()) types.push_back(component.type);
    }
    return all;
}

bool addBrand(Reading& reading, const PlacedText& name) {
    Model& model = reading.model;
    Brand brand;
    brand.name = name.value;
    brand.place = name.place;
    brand.id = static_cast<int>(model.brands.size()) + 1;
    const auto [existing, isNew] = model.brandIndex.emplace(brand.name, brand.id - 1);
    if (isNew) {
        model.brands.push_back(std::move(brand));
        return true;
    }
    const Place& first = model.brands[at(existing->second)].place;
    reading.diagnostics.error(
        "repeated", name.place,
        fmt::format("brand \"{}\" stands here and at {}; expected each name once", name.value, toString(first)));
    return false;
}

void readBrand(Reading& reading, const PlacedText& name, const Value& original, const BrandTypes& types) {
    const Value table = withOverrides(original, {"brands", name.value}, reading.overrides);
    const std::string what = fmt::format("brand \"{}\"", name.value);
    const int index = reading.model.findBrand(name.value);
    Brand& brand = reading.model.brands[at(index)];
    Section section(table, what, reading.diagnostics);
    brand.capital = readCapital(section, sizeUnitOf(types[at(index)]), reading.model.economics.currency);
    for (const auto& [key, value] : table.fields) {
        if (isKeyOfCapital(key.value) || (value.fromCell && (key.value == "name" || value.text.empty()))) continue;
        std::optional<int> number = wholeNumber(key.value);
        if (!number) number = parameterNumber(key.value);
        if (!number || *number < 1 || *number >= 1 << 24) {
            reading.diagnostics.error("unknown-name", key.place,
                                      fmt::format("{}: there is no parameter \"{}\"{}", what, key.value,
                                                  reading.diagnostics.suggest(key.value, parameterNames)));
            continue;
        }
        std::vector<UnitUse> uses = unitsIn(types[at(index)], *number);
        const bool isUsed = !uses.empty();
        if (!isUsed) uses = unitsAnywhere(key.value);
        const auto quantity = readParameter(value, uses, isUsed, what + ": " + key.value, reading.diagnostics);
        // One that cannot be read is given all the same, as no number, which no check minds.
        const auto [existing, isNew] =
            brand.specifications.emplace(*number, Placed<double>{quantity.value_or(std::nan("")), key.place});
        if (!isNew) {
            reading.diagnostics.error("repeated", key.place,
                                      fmt::format("{}: {} is specification {}, which stands already at {}", what,
                                                  key.value, *number, toString(existing->second.place)));
        }
    }
}

}  // namespace kesto
