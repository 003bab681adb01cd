// What a warning is about, under a short name that stays: programs read it, and a model accepts by it what is meant.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace kesto {

// A strict run fails on warnings about wiring, values and results, not on notes.
enum class About : std::uint8_t { wiring, values, results, note };

struct WarningCode {
    std::string_view name;
    About about;
    std::string_view meaning;  // in the list of warnings
};

namespace warn {

inline constexpr WarningCode kReplacedConnection{"replaced-connection", About::wiring,
                                                 "two connections between the same two components; the later counts"};
inline constexpr WarningCode kSameInput{"same-input", About::wiring,
                                        "both senders use one input; the other input gets nothing"};
inline constexpr WarningCode kUnreadInput{"unread-input", About::wiring,
                                          "the only sender uses input 2, but the component reads input 1"};
inline constexpr WarningCode kLongTracing{"long-tracing", About::note, "tracing the sources takes long"};
inline constexpr WarningCode kUnusedBrand{"unused-brand", About::values, "no component uses the brand"};
inline constexpr WarningCode kUnreadSize{"unread-size", About::values, "the type does not read its size"};
inline constexpr WarningCode kUnreadParameter{"unread-parameter", About::values,
                                              "no component of the brand reads the parameter"};
inline constexpr WarningCode kFewReservoirs{"few-reservoirs", About::wiring,
                                            "the component finds fewer reservoirs in its group than it works with"};
inline constexpr WarningCode kPolarDays{"polar-days", About::values, "days without sunrise or sunset"};
inline constexpr WarningCode kFrost{"frost", About::values, "a temperature below 0 degC where the model has none"};
inline constexpr WarningCode kOddSize{"odd-size", About::values, "an area or a capacity that cannot be"};
inline constexpr WarningCode kOddFraction{"odd-fraction", About::values, "a fraction that is not between 0 and 1"};
inline constexpr WarningCode kLowWind{"low-wind", About::values, "a wind that is low for km/h"};
inline constexpr WarningCode kNegativeRain{"negative-rain", About::values, "rain below 0"};
inline constexpr WarningCode kTimeStep{"time-step", About::values, "a time step other than one day"};
inline constexpr WarningCode kPartYear{"part-year", About::note, "the first year has its whole yearly allowance"};
inline constexpr WarningCode kMixedUnits{"mixed-units", About::values, "a group books millimetres and litres together"};
inline constexpr WarningCode kNoSource{"no-source", About::wiring, "a loop that no source feeds"};
inline constexpr WarningCode kNoInput{"no-input", About::wiring, "nothing sends to the component"};
inline constexpr WarningCode kNoOutput{"no-output", About::wiring, "the component sends to nothing"};
inline constexpr WarningCode kIdDigits{"id-digits", About::values, "ids that source tracing may mix up"};
inline constexpr WarningCode kNotRecorded{"not-recorded", About::note, "outputs that cannot be recorded unchanged"};

// All of them, for the list in the docs and for `accept`.
inline constexpr std::array kAll{
    &kReplacedConnection, &kSameInput, &kUnreadInput, &kLongTracing, &kUnusedBrand, &kUnreadSize, &kUnreadParameter,
    &kFewReservoirs,      &kPolarDays, &kFrost,       &kOddSize,     &kOddFraction, &kLowWind,    &kNegativeRain,
    &kTimeStep,           &kPartYear,  &kMixedUnits,  &kNoSource,    &kNoInput,     &kNoOutput,   &kIdDigits,
    &kNotRecorded};

}  // namespace warn

}  // namespace kesto
