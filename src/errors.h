// Every text that the engine can report, and the three ways of reporting: an error, a driver's message without the
// flag, and a violated invariant.
#ifndef KESTO_ERRORS_H
#define KESTO_ERRORS_H

#include "AUEglobals.h"

namespace text {

// Entry
inline constexpr char kBusy[] = "Another run is going on in this process!";

// Set-up
inline constexpr char kNoMemory[] = "Cannot allocate memory for %s!";
inline constexpr char kNoSequence[] = "Error in CalcSequence!";

// Time loop, by the driver
inline constexpr char kInputCount[] = "Compnt. %d has %d input signals!";
inline constexpr char kUnrecognized[] = "Unrecognized component with id=%d!";
inline constexpr char kWrongInputs[] = "%s (id=%d) wrong inputs!";

// Look-ups
inline constexpr char kIdNotFound[] = "Id not found in Net_Compnt!";
inline constexpr char kSpecificationNotFound[] = "Specification %d of brand %d not found!";
inline constexpr char kNotInSequence[] = "Compnt id wasn't found in CompntId!";
inline constexpr char kMultiplierNotFound[] = "Mult series not found!";
inline constexpr char kSeriesNotFound[] = "Series of type %s of component with id=%d not found!";
inline constexpr char kNoValues[] = "Series of type %s of component with id=%d has no values!";
inline constexpr char kIndexBeyond[] = "Indexing beyond list in vector%s!";
inline constexpr char kStepOutside[] = "Step %d is outside the series of component with id=%d!";
inline constexpr char kRecordNotFound[] = "SigSeries of type %s not found!";

// Models
inline constexpr char kFrequencyNotFound[] = "Freq series of a group not found!";
inline constexpr char kApplianceKind[] = "FUBAR tech_id!";
inline constexpr char kInfeasible[] = "Infeasibility in component with id=%d";
inline constexpr char kNoReservoir[] = "No SW for component with id=%d";
inline constexpr char kNoPaths[] = "No paths for component id=%d !";
inline constexpr char kNegativeDelay[] = "Delay should be a positive integer!";
inline constexpr char kDailyStore[] = "BGD component requires daily time step!";
inline constexpr char kDailyRadiation[] = "Solar radiation components require daily time step!";
inline constexpr char kDailyQuota[] = "MT works only with daily time step!";
inline constexpr char kTemperatures[] = "Tmin, Tmax not properly defined!";
inline constexpr char kNoCalendar[] = "time_t overflow!";

// Receiving units
inline constexpr char kNoNode[] = "No binary tree node for this receiver!";
inline constexpr char kUnknownOnPath[] = "techid of compid=%d?";

}  // namespace text

// Writes a formatted text into ErrMsg, cut at 255 characters, and leaves the flag alone.
[[gnu::format(printf, 2, 3)]] void report(AUEglobals* Globals, const char* format, ...);

// Writes a formatted text into ErrMsg and sets ErrFlag.
[[gnu::format(printf, 2, 3)]] void fail(AUEglobals* Globals, const char* format, ...);

// Copies a text into ErrMsg as it stands and sets ErrFlag.
void error(AUEglobals* Globals, const char* text);

// Unless `holds`: reports the expression with its module and line on stderr and aborts, in every build type. The line
// is part of the message that users quote, so it is fixed by hand and does not follow the source file.
void invariant(bool holds, const char* expression, const char* module, int line);

#endif
