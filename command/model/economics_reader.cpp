// Reads [economics], and the capital of brands and components.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "reader_parts.h"

namespace kesto {

namespace {

// "300 EUR" and "2.10 EUR/m3" are meant as 300 and "2.10 /m3".
Value withoutCurrency(const Value& value, const std::string& currency) {
    Value bare = value;
    const std::size_t blank = value.kind == Value::Kind::text ? value.text.rfind(' ') : std::string::npos;
    if (blank == std::string::npos || currency.empty()) return bare;
    const std::string_view unit = std::string_view(value.text).substr(blank + 1);
    if (!unit.starts_with(currency)) return bare;
    bare.text = value.text.substr(0, blank) + (unit == currency ? "" : " ") + std::string(unit.substr(currency.size()));
    const auto number = value.fromCell ? readNumber(bare.text, value.decimalMark) : parseNumber(bare.text);
    if (!number) return bare;
    bare.kind = Value::Kind::real;
    bare.number = *number;
    return bare;
}

// A price or a sum of money, none of which is below 0.
std::optional<double> money(Section& section, std::string_view key, std::string_view unit,
                            const std::string& currency) {
    const Value* given = section.find(key);
    if (!given) return std::nullopt;
    const Value value = withoutCurrency(*given, currency);
    const auto amount = readQuantity(value, unit, fmt::format("{}: {}", section.what(), key), section.diagnostics());
    if (amount && *amount < 0) section.wrong(*given, key, "0 or more");
    return amount;
}

std::optional<double> years(Section& section, std::string_view key) {
    const auto given = section.quantity(key, "a");
    if (given && !(given->value > 0)) section.wrong(*section.find(key), key, "years above 0");
    return given ? std::optional(given->value) : std::nullopt;
}

// [[size, capital], ...], ascending.
std::vector<std::pair<double, double>> costCurve(Section& section, std::string_view sizeUnit,
                                                 const std::string& currency) {
    constexpr std::string_view kKey = "capital_by_size";
    constexpr std::string_view kExpected = "a list of two [size, capital] or more, each size above the one before";
    const Value* given = section.find(kKey);
    if (!given) return {};
    std::vector<std::pair<double, double>> curve;
    const std::string what = fmt::format("{}: {}", section.what(), kKey);
    for (const Value& point : given->items) {
        if (point.kind != Value::Kind::array || point.items.size() != 2) {
            section.wrong(*given, kKey, kExpected);
            return {};
        }
        const auto size = readQuantity(point.items[0], sizeUnit, what, section.diagnostics());
        const auto cost = readQuantity(withoutCurrency(point.items[1], currency), "", what, section.diagnostics());
        if (!size || !cost) return {};
        curve.emplace_back(*size, *cost);
    }
    const bool isAscending =
        std::is_sorted(curve.begin(), curve.end(), [](const auto& a, const auto& b) { return a.first <= b.first; });
    const bool isMoney = std::all_of(curve.begin(), curve.end(), [](const auto& point) { return point.second >= 0; });
    if (curve.size() < 2 || !isAscending || !isMoney) {
        section.wrong(*given, kKey, kExpected);
        return {};
    }
    return curve;
}

}  // namespace

double Capital::of(double size) const {
    if (bySize.empty()) return fixed + perSize * size;
    // Beyond the table along its first or last line.
    auto above =
        std::find_if(bySize.begin() + 1, bySize.end() - 1, [&](const auto& point) { return point.first >= size; });
    const auto& [low, costOfLow] = *(above - 1);
    const auto& [high, costOfHigh] = *above;
    return std::max(0.0, costOfLow + (costOfHigh - costOfLow) * (size - low) / (high - low));
}

Capital capitalOf(const Model& model, const Component& component) {
    const Capital own = component.capital;
    if (component.brand < 0) return own;
    Capital capital = own.isGiven ? own : model.brands[at(component.brand)].capital;
    const auto& lifeOfBrand = model.brands[at(component.brand)].capital.life;
    capital.life = own.life ? own.life : lifeOfBrand;
    return capital;
}

Capital readCapital(Section& section, std::string_view sizeUnit, const std::string& currency) {
    Capital capital;
    capital.place = section.place();
    const std::string perSize = sizeUnit == "L" || sizeUnit == "m2" ? fmt::format("/{}", sizeUnit) : "";
    const auto fixed = money(section, "capital", "", currency);
    const auto bySize = money(section, "capital_per_size", perSize, currency);
    capital.fixed = fixed.value_or(0);
    capital.perSize = bySize.value_or(0);
    capital.bySize = costCurve(section, sizeUnit, currency);
    capital.life = years(section, "life");
    capital.isGiven = fixed || bySize || !capital.bySize.empty();
    if (!capital.bySize.empty() && (fixed || bySize)) {
        section.wrong(*section.find("capital_by_size"), "capital_by_size",
                      "it alone, or capital and capital_per_size, whose sum is the capital");
    }
    return capital;
}

bool isKeyOfCapital(std::string_view key) {
    return key == "capital" || key == "capital_per_size" || key == "capital_by_size" || key == "life";
}

void readEconomics(Reading& reading, const Value& table) {
    Economics& economics = reading.model.economics;
    Section section(table, "[economics]", reading.diagnostics);
    economics.isGiven = true;
    economics.place = table.place;
    if (const auto currency = section.text("currency")) economics.currency = currency->value;
    economics.waterPrice = money(section, "water_price", "/m3", economics.currency);
    economics.sewagePrice = money(section, "sewage_price", "/m3", economics.currency);
    economics.energyPrice = money(section, "energy_price", "/kWh", economics.currency);
    if (const auto interest = section.quantity("interest", "-")) {
        economics.interest = interest->value;
        if (interest->value < 0 || interest->value >= 1) {
            section.wrong(*section.find("interest"), "interest",
                          "a fraction from 0 to below 1, or a text such as \"3 %\"");
        }
    }
    economics.horizon = years(section, "horizon");
    economics.countsCapacity = section.boolean("count_capacity_cost").value_or(false);
    if (const auto baseline = section.text("baseline")) {
        economics.baseline = baseline->value;
        const auto& scenarios = reading.model.scenarios;
        const bool isKnown = std::any_of(scenarios.begin(), scenarios.end(),
                                         [&](const Scenario& one) { return one.name == baseline->value; });
        if (!isKnown) {
            const auto names = [&] {
                std::vector<std::string_view> all;
                for (const Scenario& one : scenarios) {
                    all.emplace_back(one.name);
                }
                return all;
            };
            reading.diagnostics.error("unknown-name", baseline->place,
                                      fmt::format("[economics]: there is no scenario \"{}\"{}", baseline->value,
                                                  reading.diagnostics.suggest(baseline->value, names)));
        }
    }
    section.allow("sewage_to");  // read once the components are known
    section.finish();
}

void finishEconomics(Reading& reading, const Value& table) {
    Model& model = reading.model;
    const Value* given = table.field("sewage_to");
    std::vector<const Value*> names;
    if (given && given->kind == Value::Kind::text) names.push_back(given);
    for (std::size_t i = 0; given && i < given->items.size(); ++i) {
        names.push_back(&given->items[i]);
    }
    if (given && names.empty()) {
        reading.diagnostics.error(
            "wrong-value", given->place,
            fmt::format("[economics]: sewage_to is {}; expected names of components of type water_body",
                        describe(*given)));
    }
    for (const Value* name : names) {
        const int component = name->isText() ? model.findComponent(name->text) : kUnknown;
        if (component >= 0 && model.components[at(component)].code == code::kWaterBody) {
            model.economics.sewageTo.push_back(component);
            continue;
        }
        reading.diagnostics.error(
            "unknown-name", name->place,
            fmt::format(
                "[economics]: sewage_to names {}; expected a component of type water_body{}", describe(*name),
                component >= 0 ? "" : reading.diagnostics.suggest(name->text, [&] { return model.componentNames(); })));
    }
    if (model.economics.horizon) return;
    for (const Component& component : model.components) {
        const Capital capital = capitalOf(model, component);
        if (!capital.isGiven || capital.life) continue;
        reading.diagnostics.error(
            "missing-key", capital.place,
            fmt::format("{} has capital and no life; expected its life in years, or a horizon in [economics]",
                        nameOf(component)),
            component.name);
    }
}

}  // namespace kesto
