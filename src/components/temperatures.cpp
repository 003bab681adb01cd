#include "components/temperatures.h"

#include "components/lookup.h"
#include "errors.h"

std::optional<Temperatures> readTemperatures(AUEglobals* Globals, std::int32_t key) {
    const auto tMin = readNow(Globals, Series::Tmin, key);
    if (!tMin) return std::nullopt;
    const auto tMax = readNow(Globals, Series::Tmax, key);
    if (!tMax) return std::nullopt;
    if (*tMin > *tMax) {
        error(Globals, text::kTemperatures);
        return std::nullopt;
    }
    return Temperatures{*tMin, *tMax};
}
