// The date of a step. Steps are days of the calendar, whatever TimeStep says of their length.
#ifndef KESTO_CALENDAR_H
#define KESTO_CALENDAR_H

#include <ctime>
#include <optional>

#include "AUEglobals.h"

// Local calendar time of the current step, in the process's time zone: StartTime + CurStep days. When the platform
// cannot break it down, that is reported ("time_t overflow!", ErrFlag) and nothing is given back.
std::optional<std::tm> calendarOfStep(AUEglobals* Globals);

#endif
