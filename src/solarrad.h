// Solar and long-wave radiation, by day of the year [kJ/m2/d].
//
// Sources: Allen et al. (1998), FAO Irrigation and Drainage Paper 56, equations 21 to 25 (extraterrestrial radiation)
// and 39 (net long-wave radiation); Bristow and Campbell (1984), Agricultural and Forest Meteorology 31, 159-166
// (short-wave radiation from the daily range of temperature).
#ifndef KESTO_SOLARRAD_H
#define KESTO_SOLARRAD_H

#include <array>
#include <cstdint>

#include "AUEglobals.h"

// Extraterrestrial radiation by day of the year, 0 = 1 January. Each model that needs one keeps its own as a static: it
// counts as empty while its first value is 0, is filled for the latitude of the run that uses it first, and is then
// kept for the life of the process.
using DayTable = std::array<float, 366>;

// Fills a day table for the record's latitude. Days of polar night or midnight sun become not-a-number.
void insolation(const AUEglobals* Globals, DayTable& Rpot);

// Fills a day table that is still empty.
void fillOnFirstUse(const AUEglobals* Globals, DayTable& Rpot);

// What stands for the day when a date is beyond the calendar, so that a step can be finished.
inline constexpr std::int32_t kMidYear = 200;

// The table's value on a day of the year.
float insolationofthisstep(const DayTable& Rpot, std::int32_t dayOfYear);

// Incoming short-wave radiation by extraterrestrial radiation and the range of the day's temperature against the mean
// range of the last 30 calls in this process [degC].
float directbeamsolar(float Ra, float tMin, float tMax);

// Net outgoing long-wave radiation, from extraterrestrial and incoming short-wave radiation and the day's two
// temperatures [degC].
float netlongwave(float Ra, float shortWave, float t1, float t2);

#endif
