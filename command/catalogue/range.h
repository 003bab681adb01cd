// What values of a parameter, a size or a series make sense, and what becomes of others: an error where the model then
// means nothing, a warning where the engine goes on with what is hardly meant.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace kesto {

enum class Beyond : std::uint8_t { allowed, warning, error };

struct Range {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
    Beyond below = Beyond::allowed;
    Beyond atLow = Beyond::allowed;  // the lower end itself
    Beyond above = Beyond::allowed;
    bool perStep = false;      // a rate: it holds for what a step makes of it
    bool sharesStore = false;  // with the other rates of its type, which together have one such range
    bool limitsStore = false;  // what the type can store, its initial storage too
    constexpr bool isAny() const { return below == Beyond::allowed && above == Beyond::allowed; }
    Beyond beyond(double value) const;  // not a number: allowed
};

// "0 to 1", "0 or more", "0 to 1 in a step"; nothing where all is allowed.
std::string toText(const Range& range);

std::string withUnit(double value, std::string_view unit);
std::string withUnit(float value, std::string_view unit);  // "0.5", "3 m2"

namespace range {

inline constexpr Range kAny{};
inline constexpr Range kNotNegative{.low = 0, .below = Beyond::error};
inline constexpr Range kPositive{.low = 0, .below = Beyond::error, .atLow = Beyond::error};
// Without an area nothing happens, and it is most often forgotten.
inline constexpr Range kArea{.low = 0, .below = Beyond::error, .atLow = Beyond::warning};
inline constexpr Range kStore{.low = 0, .below = Beyond::error, .limitsStore = true};
// A factor, or an amount, whose sign the engine merely takes over.
inline constexpr Range kFactor{.low = 0, .below = Beyond::warning};
// Part of a flow: more than all of it turns the flow round.
inline constexpr Range kFraction{.low = 0, .high = 1, .below = Beyond::warning, .above = Beyond::error};
// A ratio that is hardly ever below 0 or above 1.
inline constexpr Range kRatio{.low = 0, .high = 1, .below = Beyond::warning, .above = Beyond::warning};
inline constexpr Range kPercentage{.low = 0, .high = 100, .below = Beyond::warning, .above = Beyond::warning};
// Share of what is stored that leaves in a day: more than all of it leaves what was never there.
inline constexpr Range kRate{
    .low = 0, .high = 1, .below = Beyond::error, .above = Beyond::warning, .perStep = true, .sharesStore = true};
inline constexpr Range kRateOfPart{
    .low = 0, .high = 1, .below = Beyond::error, .above = Beyond::warning, .perStep = true};
inline constexpr Range kQuality{.low = -1, .high = 1e9, .below = Beyond::warning, .above = Beyond::warning};
inline constexpr Range kTemperature{.low = -90, .high = 60, .below = Beyond::warning, .above = Beyond::warning};

}  // namespace range

}  // namespace kesto
