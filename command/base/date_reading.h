// The dates of a column as spreadsheets write them: 2012-01-31, 2012/1/31, 20120131, 31.1.2012, 31/01/2012, 01/31/2012,
// and the days that they count, 40939. A time of day after a date is passed over.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calendar.h"

namespace kesto {

enum class DateForm : std::uint8_t { yearFirst, dayMonthYear, monthDayYear, countedDays };

// Days that a spreadsheet counts from the end of 1899; some count from 1904 instead.
inline constexpr Day kFrom1904 = 1462;

struct DateColumn {
    DateForm form = DateForm::yearFirst;
    std::vector<std::optional<Day>> days;  // none where a cell holds no date; counted days as counted from 1900
    // A cell for which there are two dates, or none, and why: then the column cannot be read.
    struct Doubt {
        std::size_t row;
        std::string why;
    };
    std::optional<Doubt> doubt;
};

DateColumn readDates(std::size_t rows, const std::function<std::string_view(std::size_t)>& cell);

}  // namespace kesto
