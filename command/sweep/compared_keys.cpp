#include "compared_keys.h"

#include <algorithm>
#include <optional>

#include "number_format.h"
#include "units.h"

namespace kesto {

namespace {

struct Amount {
    double number;
    std::string_view unit;
};

// "3 m3", or "3"; none where it is something else.
std::optional<Amount> amountOf(std::string_view text) {
    const std::size_t blank = std::min(text.find(' '), text.size());
    const auto number = parseNumber(text.substr(0, blank));
    if (!number) return std::nullopt;
    return Amount{*number, text.substr(std::min(blank + 1, text.size()))};
}

// Without a unit it is in that of the key.
std::optional<double> numberIn(const std::string& unit, const Amount& amount) {
    if (amount.unit.empty()) return amount.number;
    const auto found = conversion(amount.unit, unit);
    return found ? std::optional(amount.number * found->factor + found->offset) : std::nullopt;
}

// One number for each text; none unless all of them are quantities in this unit.
std::vector<double> numbersIn(const std::string& unit, const std::vector<std::string>& texts) {
    std::vector<double> numbers;
    for (const std::string& text : texts) {
        const auto amount = amountOf(text);
        const auto number = amount ? numberIn(unit, *amount) : std::nullopt;
        if (!number && !text.empty()) return {};
        numbers.push_back(number.value_or(kNoValue));
    }
    return numbers;
}

// Of those that the texts have, one that all of them can be turned into; none where some have one and some do not.
std::optional<std::string> commonUnit(const std::vector<std::string>& texts) {
    std::vector<std::string> units;
    for (const std::string& text : texts) {
        if (const auto amount = amountOf(text)) units.emplace_back(amount->unit);
    }
    for (const std::string& unit : units) {
        const bool isCommon = std::all_of(units.begin(), units.end(), [&](const std::string& other) {
            return other.empty() == unit.empty() && conversion(other, unit);
        });
        if (isCommon) return unit;
    }
    return std::nullopt;
}

}  // namespace

ComparedSweep::Key comparedKey(const std::string& name, const std::string& unit, std::vector<std::string> texts) {
    ComparedSweep::Key key{name, unit, std::move(texts), {}};
    const bool isGiven =
        std::any_of(key.texts.begin(), key.texts.end(), [](const auto& text) { return !text.empty(); });
    if (!isGiven) return key;
    const auto common = unit.empty() ? commonUnit(key.texts) : unit;
    if (common) key.numbers = numbersIn(*common, key.texts);
    key.unit = key.numbers.empty() ? std::string() : *common;
    return key;
}

}  // namespace kesto
