#include "section.h"

#include <fmt/format.h>

#include <cmath>

#include "display.h"
#include "number_format.h"
#include "units.h"

namespace kesto {

namespace {

constexpr std::size_t kLongestShown = 200;  // of a name, in messages

}  // namespace

Section::Section(const Value& table, const std::string& what, Diagnostics& diagnostics)
    : table_(table), what_(shortened(what, kLongestShown)), diagnostics_(diagnostics) {}

const Value* Section::find(std::string_view key) {
    allow(key);
    return table_.field(key);
}

const Value* Section::require(std::string_view key, std::string_view expected) {
    const Value* value = find(key);
    if (!value)
        diagnostics_.error("missing-key", place(), fmt::format("{} has no {}; expected {}", what_, key, expected));
    return value;
}

void Section::wrong(const Value& value, std::string_view key, std::string_view expected) {
    diagnostics_.error("wrong-value", value.place,
                       fmt::format("{}: {} is {}; expected {}", what_, key, describe(value), expected));
}

std::optional<PlacedText> Section::text(std::string_view key) {
    const Value* value = find(key);
    if (!value) return std::nullopt;
    if (!value->isText() || value->text.empty()) {
        wrong(*value, key, "a text");
        return std::nullopt;
    }
    return PlacedText{value->text, value->place};
}

std::optional<PlacedText> Section::requireText(std::string_view key) {
    if (!require(key, "a text")) return std::nullopt;
    return text(key);
}

std::optional<bool> Section::boolean(std::string_view key) {
    const Value* value = find(key);
    if (!value) return std::nullopt;
    if (value->kind == Value::Kind::boolean) return value->boolean;
    wrong(*value, key, "true or false");
    return std::nullopt;
}

std::optional<Placed<Day>> Section::date(std::string_view key) {
    const Value* value = require(key, "a date such as 2012-01-01");
    if (!value) return std::nullopt;
    if (value->kind == Value::Kind::date) return Placed<Day>{value->day, value->place};
    if (value->kind == Value::Kind::text) {
        if (const auto day = parseDay(value->text)) return Placed<Day>{*day, value->place};
    }
    wrong(*value, key, "a date such as 2012-01-01");
    return std::nullopt;
}

std::optional<int> Section::integer(std::string_view key, int least, int most) {
    const Value* value = find(key);
    if (!value) return std::nullopt;
    const double number = value->number;
    if (value->isNumber() && number == std::floor(number) && number >= least && number <= most) {
        return static_cast<int>(number);
    }
    wrong(*value, key, fmt::format("a whole number from {} to {}", least, most));
    return std::nullopt;
}

std::optional<Placed<double>> Section::quantity(std::string_view key, std::string_view unit) {
    const Value* value = find(key);
    if (!value) return std::nullopt;
    const auto number = readQuantity(*value, unit, fmt::format("{}: {}", what_, key), diagnostics_);
    if (!number) return std::nullopt;
    return Placed<double>{*number, value->place};
}

void Section::finish() {
    for (const auto& [key, value] : table_.fields) {
        if (known_.contains(key.value)) continue;
        const auto names = [&] { return std::vector<std::string_view>(known_.begin(), known_.end()); };
        diagnostics_.error(
            "unknown-key", key.place,
            fmt::format("{} has no key \"{}\"{}", what_, key.value, diagnostics_.suggest(key.value, names)));
    }
}

namespace {

std::optional<double> inUnit(const Value& value, std::string_view unit, const std::string& what,
                             Diagnostics& diagnostics) {
    const std::string wanted = unit.empty() || unit == "-" ? "a number" : fmt::format("a number in {}", unit);
    if (value.isNumber()) return value.number;
    const std::size_t blank = value.kind == Value::Kind::text ? value.text.rfind(' ') : std::string::npos;
    // "3m3" was meant to have a unit.
    const bool startsWithDigit = value.kind == Value::Kind::text && !value.text.empty() && value.text[0] >= '0' &&
                                 value.text[0] <= '9' && unitsFor(unit).size() > 1;
    if (blank == std::string::npos && !startsWithDigit) {
        diagnostics.error("wrong-value", value.place,
                          fmt::format("{} is {}{}; expected {}", what, describe(value),
                                      value.fromCell ? adviceOn(value.text, value.decimalMark) : "", wanted));
        return std::nullopt;
    }
    const std::string_view text = value.text;
    const auto number =
        value.fromCell ? readNumber(text.substr(0, blank), value.decimalMark) : parseNumber(text.substr(0, blank));
    const auto factor = conversion(blank == std::string::npos ? "" : text.substr(blank + 1), unit);
    if (!number || !factor) {
        const std::vector<std::string_view> units = unitsFor(unit);
        const std::string orText = unit.empty() ? ""
                                                : fmt::format(", or a text with a number, a blank and {}{}",
                                                              units.size() > 1 ? "one of " : "", listOf(units));
        diagnostics.error(
            "wrong-value", value.place,
            fmt::format("{} is {}{}; expected {}{}", what, describe(value),
                        value.fromCell ? adviceOn(text.substr(0, blank), value.decimalMark) : "", wanted, orText));
        return std::nullopt;
    }
    return *number * factor->factor + factor->offset;
}

}  // namespace

std::optional<double> readQuantity(const Value& value, std::string_view unit, const std::string& what,
                                   Diagnostics& diagnostics) {
    const auto number = inUnit(value, unit, what, diagnostics);
    if (!number || fitsSinglePrecision(*number)) return number;
    diagnostics.error("wrong-value", value.place,
                      fmt::format("{} is {}; expected a number that single precision can hold, at most 3.4e38", what,
                                  describe(value)));
    return std::nullopt;
}

}  // namespace kesto
