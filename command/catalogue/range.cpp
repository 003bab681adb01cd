#include "range.h"

#include <fmt/format.h>

namespace kesto {

Beyond Range::beyond(double value) const {
    if (value < low) return below;
    if (value == low) return atLow;
    return value > high ? above : Beyond::allowed;
}

namespace {

template <class T>
std::string joinUnit(T value, std::string_view unit) {
    return unit.empty() || unit == "-" ? fmt::format("{}", value) : fmt::format("{} {}", value, unit);
}

}  // namespace

std::string withUnit(double value, std::string_view unit) {
    return joinUnit(value, unit);
}
std::string withUnit(float value, std::string_view unit) {
    return joinUnit(value, unit);
}

std::string toText(const Range& range) {
    const bool hasLow = range.below != Beyond::allowed, hasHigh = range.above != Beyond::allowed;
    std::string text;
    if (hasLow && hasHigh) text = fmt::format("{:g} to {:g}", range.low, range.high);
    if (hasLow && !hasHigh)
        text =
            range.atLow == Beyond::allowed ? fmt::format("{} or more", range.low) : fmt::format("above {}", range.low);
    if (!hasLow && hasHigh) text = fmt::format("at most {}", range.high);
    return range.perStep ? text + " in a step" : text;
}

}  // namespace kesto
