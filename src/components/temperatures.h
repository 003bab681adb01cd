// The day's extremes of temperature, as the models that depend on radiation read them.
#ifndef KESTO_COMPONENTS_TEMPERATURES_H
#define KESTO_COMPONENTS_TEMPERATURES_H

#include <cstdint>
#include <optional>

#include "AUEglobals.h"

struct Temperatures {
    float tMin;  // [degC]
    float tMax;
};

// Tmin and Tmax of a key at this step. Reports a missing series and a minimum above the maximum.
std::optional<Temperatures> readTemperatures(AUEglobals* Globals, std::int32_t key);

#endif
