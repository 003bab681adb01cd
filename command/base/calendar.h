// Days of the calendar, counted from 1970-01-01.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kesto {

using Day = std::int64_t;

inline constexpr double kDaysPerYear = 365.25;

struct CivilDate {
    int year, month, day;
};

Day dayOf(const CivilDate& date);
CivilDate dateOf(Day day);
bool isValid(const CivilDate& date);

// The months, 1 to 12, of so many days from `start` on.
std::vector<std::uint8_t> monthsOf(Day start, std::size_t days);

// YYYY-MM-DD, alone or followed by a time of day, which is ignored.
std::optional<Day> parseDay(std::string_view text);
std::string toText(Day day);

// Ascending days as ranges, cut short after ten: "2012-01-03, 2012-01-05 to 2012-01-09 and 2012-02-01".
std::string rangesOf(const std::vector<Day>& days);

int weekdayOf(Day day);  // 0 is Monday

// Days to add to a run so that it starts where the record can say it (1970 to 2038) and meets the same calendar: the
// same days of the month and of the year throughout. 0 where none are needed; none where no such years exist.
std::optional<Day> shiftToRecord(Day start, Day end);

}  // namespace kesto
