#include "calendar.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>

namespace kesto {

namespace {

std::chrono::year_month_day toChrono(const CivilDate& date) {
    return {std::chrono::year{date.year}, std::chrono::month{static_cast<unsigned>(date.month)},
            std::chrono::day{static_cast<unsigned>(date.day)}};
}

bool isLeap(int year) {
    return std::chrono::year{year}.is_leap();
}

bool readDigits(std::string_view text, int& number) {
    for (const char c : text) {
        if (c < '0' || c > '9') return false;
    }
    return std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc{};
}

}  // namespace

bool isValid(const CivilDate& date) {
    return date.month >= 1 && date.month <= 12 && date.day >= 1 && date.day <= 31 && toChrono(date).ok();
}

Day dayOf(const CivilDate& date) {
    return std::chrono::sys_days{toChrono(date)}.time_since_epoch().count();
}

CivilDate dateOf(Day day) {
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{day}}};
    return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

std::vector<std::uint8_t> monthsOf(Day start, std::size_t days) {
    std::vector<std::uint8_t> months(days);
    for (std::size_t i = 0; i < days;) {
        const CivilDate date = dateOf(start + static_cast<Day>(i));
        const bool isLast = date.month == 12;
        const Day next = dayOf({date.year + (isLast ? 1 : 0), isLast ? 1 : date.month + 1, 1});
        const std::size_t end = std::min(days, static_cast<std::size_t>(next - start));
        std::fill(months.begin() + static_cast<std::ptrdiff_t>(i), months.begin() + static_cast<std::ptrdiff_t>(end),
                  static_cast<std::uint8_t>(date.month));
        i = end;
    }
    return months;
}

std::optional<Day> parseDay(std::string_view text) {
    if (text.size() < 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
    if (text.size() > 10 && text[10] != 'T' && text[10] != ' ') return std::nullopt;
    CivilDate date{};
    if (!readDigits(text.substr(0, 4), date.year) || !readDigits(text.substr(5, 2), date.month) ||
        !readDigits(text.substr(8, 2), date.day) || !isValid(date)) {
        return std::nullopt;
    }
    return dayOf(date);
}

std::string toText(Day day) {
    const CivilDate date = dateOf(day);
    return fmt::format("{:04}-{:02}-{:02}", date.year, date.month, date.day);
}

std::string rangesOf(const std::vector<Day>& days) {
    constexpr std::size_t kMost = 10;
    std::vector<std::string> ranges;
    for (std::size_t i = 0; i < days.size();) {
        std::size_t last = i;
        while (last + 1 < days.size() && days[last + 1] == days[last] + 1)
            ++last;
        ranges.push_back(last == i ? toText(days[i]) : fmt::format("{} to {}", toText(days[i]), toText(days[last])));
        i = last + 1;
    }
    std::string text;
    for (std::size_t i = 0; i < ranges.size() && i < kMost; ++i) {
        if (i > 0) text += i + 1 == ranges.size() ? " and " : ", ";
        text += ranges[i];
    }
    if (ranges.size() > kMost) text += fmt::format(" and {} more gaps", ranges.size() - kMost);
    return text;
}

std::optional<Day> shiftToRecord(Day start, Day end) {
    constexpr Day kFirst = 0;
    constexpr Day kLast = 2147483647 / 86400;
    if (start >= kFirst && start <= kLast) return 0;
    const CivilDate from = dateOf(start);
    const int years = dateOf(end).year - from.year + 1;
    // 28 years away the days of the week agree too.
    const auto fits = [&](int year) {
        if (!isValid({year, from.month, from.day})) return false;
        const Day day = dayOf({year, from.month, from.day});
        if (day < kFirst || day > kLast) return false;
        for (int i = 0; i < years; ++i) {
            if (isLeap(year + i) != isLeap(from.year + i)) return false;
        }
        return true;
    };
    for (const bool sameWeekdays : {true, false}) {
        for (int year = 2038; year >= 1970; --year) {
            if (sameWeekdays && (year - from.year) % 28 != 0) continue;
            if (fits(year)) return dayOf({year, from.month, from.day}) - start;
        }
    }
    return std::nullopt;
}

int weekdayOf(Day day) {
    const std::chrono::weekday weekday{std::chrono::sys_days{std::chrono::days{day}}};
    return static_cast<int>(weekday.iso_encoding()) - 1;
}

}  // namespace kesto
