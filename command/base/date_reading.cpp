#include "date_reading.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace kesto {

namespace {

// Three numbers of a date as they stand, or a count of days.
struct Parts {
    enum class Kind : std::uint8_t { none, yearFirst, yearLast, shortYear, count };
    Kind kind = Kind::none;
    char separator = '-';
    std::array<int, 3> number{};
};

constexpr int kFirstCount = 61;      // 1900-03-01: spreadsheets count a 29 February before it that there never was
constexpr int kLastCount = 2958465;  // 9999-12-31

std::size_t digitsOf(std::string_view text) {
    const std::size_t end = text.find_first_not_of("0123456789");
    return end == std::string_view::npos ? text.size() : end;
}

int take(std::string_view& text, std::size_t digits) {
    int number = 0;
    const std::string_view taken = text.substr(0, digits);
    std::from_chars(taken.data(), taken.data() + taken.size(), number);
    text.remove_prefix(taken.size());
    return number;
}

bool isTime(std::string_view rest) {
    return rest.empty() || rest.front() == 'T' || rest.front() == ' ';
}

// "40939", and "40939.5" or "40939,5" at noon.
Parts countOf(std::string_view text, std::size_t digits) {
    Parts parts;
    if (digits == 8 && text.size() == 8) {
        parts.kind = Parts::Kind::yearFirst;
        parts.number[0] = take(text, 4);
        parts.number[1] = take(text, 2);
        parts.number[2] = take(text, 2);
        return parts;
    }
    if (digits < 2 || digits > 7) return parts;
    parts.number[0] = take(text, digits);
    const bool isWhole = text.empty();
    const bool hasTime = !isWhole && (text[0] == '.' || text[0] == ',') && digitsOf(text.substr(1)) == text.size() - 1;
    const bool isInRange = parts.number[0] >= kFirstCount && parts.number[0] <= kLastCount;
    if ((isWhole || hasTime) && isInRange) parts.kind = Parts::Kind::count;
    return parts;
}

Parts partsOf(std::string_view text) {
    Parts parts;
    std::array<std::size_t, 3> digits{};
    const std::string_view all = text;
    for (std::size_t i = 0; i < 3; ++i) {
        digits[i] = digitsOf(text);
        if (digits[i] == 0 || digits[i] > 9) return {};
        if (i == 0 && (digits[0] == text.size() || digits[0] > 4)) return countOf(all, digits[0]);
        parts.number[i] = take(text, digits[i]);
        if (i == 2) break;
        if (text.empty()) return countOf(all, digits[0]);
        if (i == 0) parts.separator = text.front();
        if (text.front() != parts.separator || std::string_view("-/.").find(text.front()) == std::string_view::npos) {
            return countOf(all, digits[0]);
        }
        text.remove_prefix(1);
    }
    if (!isTime(text)) return {};
    if (digits[0] == 4 && digits[1] <= 2 && digits[2] <= 2) {
        parts.kind = Parts::Kind::yearFirst;
    } else if (digits[0] <= 2 && digits[1] <= 2 && digits[2] == 4) {
        parts.kind = Parts::Kind::yearLast;
    } else if (digits[0] <= 2 && digits[1] <= 2 && digits[2] == 2) {
        parts.kind = Parts::Kind::shortYear;
    }
    return parts;
}

std::optional<Day> dayFrom(int year, int month, int day) {
    const CivilDate date{year, month, day};
    return isValid(date) ? std::optional<Day>(dayOf(date)) : std::nullopt;
}

class Reader {
  public:
    Reader(std::size_t rows, const std::function<std::string_view(std::size_t)>& cell) : cell_(cell) {
        parts_.reserve(rows);
        for (std::size_t row = 0; row < rows; ++row) {
            parts_.push_back(partsOf(cell(row)));
            note(row);
        }
    }

    DateColumn read() {
        DateColumn column;
        if (firstDayFirst_ && firstMonthFirst_) {
            column.doubt = {
                std::max(*firstDayFirst_, *firstMonthFirst_),
                fmt::format("\"{}\" has the day first, \"{}\" the month; expected one order, or dates such as "
                            "2012-01-31",
                            cell_(*firstDayFirst_), cell_(*firstMonthFirst_))};
            return column;
        }
        if (firstOpen_ && !firstDayFirst_ && !firstMonthFirst_) {
            const Parts& open = parts_[*firstOpen_];
            column.doubt = {
                *firstOpen_,
                fmt::format("\"{}\" is {} or {}: no date of this column has a day above 12 to tell; expected "
                            "dates such as {}",
                            cell_(*firstOpen_), dateText(open, 1, 0), dateText(open, 0, 1), isoText(open, 1, 0))};
            return column;
        }
        isMonthFirst_ = firstMonthFirst_.has_value();
        column.form = form();
        column.days.reserve(parts_.size());
        for (const Parts& parts : parts_) {
            column.days.push_back(dayOfParts(parts));
        }
        if (!hasDates_ && !hasCounts_ && firstShort_) {
            column.doubt = {*firstShort_, fmt::format("the year of \"{}\" has two digits; expected four, best as in "
                                                      "2012-01-31",
                                                      cell_(*firstShort_))};
        }
        return column;
    }

  private:
    // What each cell tells about the order of all.
    void note(std::size_t row) {
        const Parts& parts = parts_[row];
        const auto first = [row](std::optional<std::size_t>& known) {
            if (!known) known = row;
        };
        if (parts.kind == Parts::Kind::shortYear) first(firstShort_);
        if (parts.kind == Parts::Kind::count) hasCounts_ = true;
        if (parts.kind == Parts::Kind::yearFirst || parts.kind == Parts::Kind::yearLast) hasDates_ = true;
        if (parts.kind != Parts::Kind::yearLast) return;
        hasYearLast_ = true;
        if (parts.separator == '.') return;  // the day comes first wherever points are used
        const auto [a, b, year] = parts.number;
        const bool canBeDayFirst = dayFrom(year, b, a).has_value(), canBeMonthFirst = dayFrom(year, a, b).has_value();
        if (canBeDayFirst && canBeMonthFirst && a != b) first(firstOpen_);
        if (canBeDayFirst && !canBeMonthFirst) first(firstDayFirst_);
        if (!canBeDayFirst && canBeMonthFirst) first(firstMonthFirst_);
    }

    DateForm form() const {
        if (hasYearLast_) return isMonthFirst_ ? DateForm::monthDayYear : DateForm::dayMonthYear;
        return hasCounts_ && !hasDates_ ? DateForm::countedDays : DateForm::yearFirst;
    }

    std::optional<Day> dayOfParts(const Parts& parts) const {
        const auto [a, b, c] = parts.number;
        switch (parts.kind) {
            case Parts::Kind::yearFirst:
                return dayFrom(a, b, c);
            case Parts::Kind::yearLast:
                return isMonthFirst_ && parts.separator != '.' ? dayFrom(c, a, b) : dayFrom(c, b, a);
            case Parts::Kind::count:
                // Among dates a number is none.
                return hasDates_ ? std::nullopt : std::optional<Day>(dayOf({1899, 12, 30}) + a);
            default:
                return std::nullopt;
        }
    }

    static std::string isoText(const Parts& parts, std::size_t month, std::size_t day) {
        return fmt::format("{:04}-{:02}-{:02}", parts.number[2], parts.number[month], parts.number[day]);
    }
    static std::string dateText(const Parts& parts, std::size_t month, std::size_t day) {
        static constexpr std::array kMonths{"January", "February", "March",     "April",   "May",      "June",
                                            "July",    "August",   "September", "October", "November", "December"};
        return fmt::format("{} {}", parts.number[day], kMonths[static_cast<std::size_t>(parts.number[month]) - 1]);
    }

    const std::function<std::string_view(std::size_t)>& cell_;
    std::vector<Parts> parts_;
    bool hasDates_ = false, hasCounts_ = false, hasYearLast_ = false, isMonthFirst_ = false;
    std::optional<std::size_t> firstOpen_, firstDayFirst_, firstMonthFirst_, firstShort_;
};

}  // namespace

DateColumn readDates(std::size_t rows, const std::function<std::string_view(std::size_t)>& cell) {
    return Reader(rows, cell).read();
}

}  // namespace kesto
