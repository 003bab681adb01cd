#include "number_format.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace kesto {

namespace {

using namespace std::string_view_literals;

// What can part the thousands and is never a decimal mark: blanks, also such that do not break a line, and apostrophes.
constexpr std::array kBlanks{" "sv, "\u00A0"sv, "\u202F"sv, "\u2009"sv, "'"sv, "\u2019"sv};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view unsignedPart(std::string_view text) {
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) text.remove_prefix(1);
    return text;
}

// "e-3" at the end of a number, else nothing.
std::string_view exponentOf(std::string_view number) {
    const std::size_t at = number.find_first_of("eE");
    if (at == std::string_view::npos || at == 0) return {};
    const std::string_view digits = unsignedPart(number.substr(at + 1));
    const bool isExponent = !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
    return isExponent ? number.substr(at) : std::string_view{};
}

// The separators of a number and the digits between them.
class Shape {
  public:
    explicit Shape(std::string_view cell) {
        std::string_view body = unsignedPart(cell);
        const std::string_view exponent = exponentOf(body);
        hasExponent_ = !exponent.empty();
        body.remove_suffix(exponent.size());
        std::size_t digits = 0;
        while (!body.empty()) {
            if (isDigit(body.front())) {
                if (separators_ == 0 && digits == 0) startsWithZero_ = body.front() == '0';
                ++digits;
                ++allDigits_;
                body.remove_prefix(1);
                continue;
            }
            const auto [kind, length] = separatorOf(body);
            if (kind == 0) return;
            take(digits);
            if (separators_ == 0) first_ = kind;
            if (separators_ > 0 && last_ != first_) isMixed_ = true;
            last_ = kind;
            ++separators_;
            digits = 0;
            body.remove_prefix(length);
        }
        lastDigits_ = digits;
        isNumber_ = allDigits_ > 0;
    }

    NumberForm form() const {
        if (!isNumber_) return NumberForm::noNumber;
        if (separators_ == 0) return NumberForm::whole;
        const bool grouped =
            !isMixed_ && first_ == last_ && groupsBeforeLast_ && lastDigits_ == 3 && hasLeader() && !hasExponent_;
        const bool isMark = last_ == '.' || last_ == ',';
        // The last mark is the decimal one: it stands once, and whatever parts the thousands before it is another.
        const bool decimal =
            isMark && !isMixed_ && (separators_ == 1 || (first_ != last_ && groupsBeforeLast_ && hasLeader()));
        const NumberForm ofLast = last_ == '.' ? NumberForm::withPoint : NumberForm::withComma;
        if (grouped && decimal) return NumberForm::either;
        if (decimal) return ofLast;
        if (!grouped) return NumberForm::noNumber;
        if (!isMark) return NumberForm::whole;
        return last_ == '.' ? NumberForm::withComma : NumberForm::withPoint;
    }

    std::size_t separators() const { return separators_; }

  private:
    // '.', ',' or, for all that cannot be a decimal mark, ' '; 0 for anything else.
    static std::pair<char, std::size_t> separatorOf(std::string_view text) {
        if (text.front() == '.' || text.front() == ',') return {text.front(), 1};
        for (const std::string_view blank : kBlanks) {
            if (text.starts_with(blank)) return {' ', blank.size()};
        }
        return {'\0', 0};
    }

    void take(std::size_t digits) {
        if (separators_ == 0) {
            leadDigits_ = digits;
        } else if (digits != 3) {
            groupsBeforeLast_ = false;
        }
    }

    // Thousands are parted after one to three digits, the first of them no 0.
    bool hasLeader() const { return leadDigits_ >= 1 && leadDigits_ <= 3 && !startsWithZero_; }

    bool isNumber_ = false, hasExponent_ = false, startsWithZero_ = false;
    bool isMixed_ = false;          // another separator than the first stands before the last
    bool groupsBeforeLast_ = true;  // three digits between each two separators
    char first_ = 0, last_ = 0;
    std::size_t separators_ = 0, leadDigits_ = 0, lastDigits_ = 0, allDigits_ = 0;
};

template <class T>
std::optional<T> plain(std::string_view cell) {
    if (!cell.empty() && cell.front() == '+') {
        cell.remove_prefix(1);
        if (!cell.empty() && cell.front() == '-') return std::nullopt;
    }
    T number{};
    const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), number);
    if (error != std::errc{} || end != cell.data() + cell.size() || !std::isfinite(number)) return std::nullopt;
    return number;
}

char decimalOf(DecimalMark mark) {
    return mark == DecimalMark::comma ? ',' : '.';
}

// Without what parts the thousands, and with a point; none when it cannot be read with this mark.
std::optional<std::string> toPlain(std::string_view cell, DecimalMark mark) {
    const NumberForm form = formOf(cell);
    if (form == NumberForm::noNumber) return std::nullopt;
    if (form == NumberForm::either && mark == DecimalMark::unknown) return std::nullopt;
    if (form == NumberForm::withPoint && mark == DecimalMark::comma) return std::nullopt;
    if (form == NumberForm::withComma && mark == DecimalMark::point) return std::nullopt;
    const char decimal = form == NumberForm::withComma ? ',' : decimalOf(mark);
    std::string number;
    for (const char c : cell) {
        if (isDigit(c) || c == '-' || c == 'e' || c == 'E') number += c;
        if (c == '+' && !number.empty()) number += c;
        if (c == decimal) number += '.';
    }
    return number;
}

// Nothing parts its thousands, and it has this decimal mark or none. Most cells are so.
bool isSimple(std::string_view cell, char decimal) {
    std::size_t marks = 0;
    for (const char c : cell) {
        if (c == decimal) ++marks;
        if (!isDigit(c) && c != decimal && c != '-') return false;
    }
    return marks <= 1;
}

template <class T>
std::optional<T> read(std::string_view cell, DecimalMark mark) {
    if (mark == DecimalMark::point) {
        if (const auto number = plain<T>(cell)) return number;
    }
    std::array<char, 32> digits;
    if (mark == DecimalMark::comma && cell.size() <= digits.size() && isSimple(cell, ',')) {
        std::replace_copy(cell.begin(), cell.end(), digits.begin(), ',', '.');
        return plain<T>({digits.data(), cell.size()});
    }
    const auto number = toPlain(cell, mark);
    return number ? plain<T>(*number) : std::nullopt;
}

}  // namespace

NumberForm formOf(std::string_view cell) {
    return Shape(cell).form();
}

bool fitsSinglePrecision(double number) {
    return std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
}

std::optional<double> parseNumber(std::string_view text) {
    return plain<double>(text);
}
std::optional<float> parseFloat(std::string_view text) {
    return plain<float>(text);
}

std::optional<double> readNumber(std::string_view cell, DecimalMark mark) {
    return read<double>(cell, mark);
}
std::optional<float> readFloat(std::string_view cell, DecimalMark mark) {
    return read<float>(cell, mark);
}

std::string adviceOn(std::string_view cell, DecimalMark mark) {
    const NumberForm form = formOf(cell);
    if (form == NumberForm::either && mark == DecimalMark::unknown) {
        return fmt::format(
            ", which is {} or {}: no other number of the file tells its decimal mark; expected it with other "
            "than three decimals, or without a mark for thousands",
            *readNumber(cell, DecimalMark::point), *readNumber(cell, DecimalMark::comma));
    }
    const bool isOther = (form == NumberForm::withPoint && mark == DecimalMark::comma) ||
                         (form == NumberForm::withComma && mark == DecimalMark::point);
    if (!isOther) return "";
    return fmt::format(", but other numbers of the file have decimal {}s",
                       mark == DecimalMark::point ? "point" : "comma");
}

bool hasThousands(std::string_view cell, DecimalMark mark) {
    if (mark != DecimalMark::unknown && isSimple(cell, decimalOf(mark))) return false;
    const NumberForm form = formOf(cell);
    if (form == NumberForm::noNumber || (form == NumberForm::either && mark == DecimalMark::unknown)) return false;
    const std::size_t separators = Shape(cell).separators();
    const char decimal = form == NumberForm::withComma ? ',' : decimalOf(mark);
    const bool hasDecimal = cell.find(decimal) != std::string_view::npos;
    return separators > (hasDecimal ? 1U : 0U);
}

}  // namespace kesto
