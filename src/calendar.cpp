#include "calendar.h"

#include <cstdint>

#include "errors.h"

std::optional<std::tm> calendarOfStep(AUEglobals* Globals) {
    const std::int64_t seconds = std::int64_t{Globals->StartTime} + std::int64_t{Globals->CurStep} * 86400;
    std::tm date{};
#ifdef _WIN32
    const __time64_t time = seconds;
    const bool converted = _localtime64_s(&date, &time) == 0;
#else
    const std::time_t time = seconds;
    const bool converted = localtime_r(&time, &date) != nullptr;
#endif
    if (converted) return date;
    fail(Globals, text::kNoCalendar);
    return std::nullopt;
}
