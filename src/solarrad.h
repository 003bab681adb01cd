// Solar and long-wave radiation, by day of the year [kJ/m2/d].
//
// Sources: Allen et al. (1998), FAO Irrigation and Drainage Paper 56, equations 21 to 25 (extraterrestrial radiation)
// and 39 (net long-wave radiation); Bristow and Campbell (1984), Agricultural and Forest Meteorology 31, 159-166
// (short-wave radiation from the daily range of temperature).
#ifndef KESTO_SOLARRAD_H
#define KESTO_SOLARRAD_H

#include <array>

#include "AUEglobals.h"

// Extraterrestrial radiation by day of the year, 0 = 1 January. Each model that needs one keeps its own as a static: it
// counts as empty while its first value is 0, is filled for the latitude of the run that uses it first, and is then
// kept for the life of the process.
using DayTable = std::array<float, 366>;

// Fills a day table for the record's latitude. Days of polar night or midnight sun become not-a-number.
void insolation(const AUEglobals* Globals, DayTable& Rpot);

// Fills a day table that is still empty.
void fillOnFirstUse(const AUEglobals* Globals, DayTable& Rpot);

// The table's value on the day of this step. When the date is beyond the calendar, reports that and gives a mid-year
// value, so that the caller can finish the step.
float insolationofthisstep(AUEglobals* Globals, const DayTable& Rpot);

// Incoming short-wave radiation by the range of the day's temperature against the mean range of the last 30 calls in
// this process [degC].
float directbeamsolar(AUEglobals* Globals, const DayTable& Rpot, float tMin, float tMax);

// Net outgoing long-wave radiation, from incoming short-wave radiation and the day's two temperatures [degC].
float netlongwave(AUEglobals* Globals, const DayTable& Rpot, float shortWave, float t1, float t2);

#endif
