#include "varied.h"

#include <fmt/format.h>

#include <cmath>
#include <optional>
#include <stdexcept>

#include "number_format.h"

namespace kesto {

namespace {

constexpr int kMostInRange = 10'000'000;

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

// At the separators that stand in no quotes and no brackets.
std::vector<std::string_view> splitAt(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    std::size_t begin = 0;
    int depth = 0;
    bool isQuoted = false;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || (text[i] == separator && depth <= 0 && !isQuoted)) {
            parts.push_back(trimmed(text.substr(begin, i - begin)));
            begin = i + 1;
            continue;
        }
        if (text[i] == '"') isQuoted = !isQuoted;
        if (isQuoted) continue;
        if (text[i] == '[' || text[i] == '{') ++depth;
        if (text[i] == ']' || text[i] == '}') --depth;
    }
    return parts;
}

struct Amount {
    double number;
    std::string_view unit;
};

std::optional<Amount> amountOf(std::string_view text) {
    const std::size_t blank = text.find(' ');
    const auto number = parseNumber(text.substr(0, blank));
    if (!number) return std::nullopt;
    return Amount{*number, blank == std::string_view::npos ? std::string_view() : trimmed(text.substr(blank))};
}

// Evenly spaced, both ends included; none where the text is no range.
std::optional<std::vector<std::string>> rangeOf(std::string_view text) {
    const std::vector<std::string_view> parts = splitAt(text, ':');
    if (parts.size() != 3) return std::nullopt;
    const auto from = amountOf(parts[0]), to = amountOf(parts[1]), count = amountOf(parts[2]);
    if (!from || !to || !count) return std::nullopt;
    if (count->number != std::floor(count->number) || count->number < 2 || count->number > kMostInRange ||
        !count->unit.empty()) {
        throw std::runtime_error(
            fmt::format("\"{}\" values; expected a whole number from 2 to {}", parts[2], kMostInRange));
    }
    if (!from->unit.empty() && !to->unit.empty() && from->unit != to->unit) {
        throw std::runtime_error(fmt::format("from \"{}\" to \"{}\"; expected one unit for both", parts[0], parts[1]));
    }
    const std::string_view unit = from->unit.empty() ? to->unit : from->unit;
    const int last = static_cast<int>(count->number) - 1;
    std::vector<std::string> values;
    for (int i = 0; i <= last; ++i) {
        const double number = i == last ? to->number : from->number + (to->number - from->number) * i / last;
        values.push_back(fmt::format("{}{}{}", number, unit.empty() ? "" : " ", unit));
    }
    return values;
}

}  // namespace

std::vector<std::string> variedValues(std::string_view text) {
    if (auto range = rangeOf(text)) return *range;
    std::vector<std::string> values;
    for (const std::string_view value : splitAt(text, ',')) {
        if (value.empty()) throw std::runtime_error(fmt::format("a value of \"{}\" is empty", text));
        values.emplace_back(value);
    }
    return values;
}

}  // namespace kesto
