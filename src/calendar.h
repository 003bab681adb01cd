// The date of a step. Steps are days of the calendar, whatever TimeStep says of their length.
#ifndef KESTO_CALENDAR_H
#define KESTO_CALENDAR_H

#include <cstdint>
#include <ctime>
#include <optional>

#include "AUEglobals.h"

// Local calendar time of a step, in the process's time zone: StartTime and that many days. Nothing when the platform
// cannot break it down.
std::optional<std::tm> calendarOf(const AUEglobals& record, std::int32_t step);

// The same of the current step. What the platform cannot break down is reported ("time_t overflow!", ErrFlag).
std::optional<std::tm> calendarOfStep(AUEglobals* Globals);

#endif
