#include "calendar.h"

#include <cstdint>

#include "errors.h"

std::optional<std::tm> calendarOf(const AUEglobals& record, std::int32_t step) {
    const std::int64_t seconds = std::int64_t{record.StartTime} + std::int64_t{step} * 86400;
    std::tm date{};
#ifdef _WIN32
    const __time64_t time = seconds;
    const bool converted = _localtime64_s(&date, &time) == 0;
#else
    const std::time_t time = seconds;
    const bool converted = localtime_r(&time, &date) != nullptr;
#endif
    return converted ? std::optional(date) : std::nullopt;
}

std::optional<std::tm> calendarOfStep(AUEglobals* Globals) {
    const auto date = calendarOf(*Globals, Globals->CurStep);
    if (!date) fail(Globals, text::kNoCalendar);
    return date;
}
