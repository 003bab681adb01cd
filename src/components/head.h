// The head curve of a reservoir: water level by stored volume, used by hydropower and by releases between reservoirs.
#ifndef KESTO_COMPONENTS_HEAD_H
#define KESTO_COMPONENTS_HEAD_H

#include <cstdint>
#include <optional>

#include "AUEglobals.h"

struct Stored {
    float V;  // WatQuant of the reservoir at the end of the previous step
    float H;  // head
};

//   H = max(a0 + a1 V / 1e9 + a2 V^2 / 1e18, 0)
//
//   a0, a1, a2   specifications 30 to 32 of the reservoir's brand
float head(float V, float a0, float a1, float a2);

// Volume and head of a reservoir. Reports what is missing and gives nothing back.
std::optional<Stored> readHead(AUEglobals* Globals, const ComponentRow* reservoir);

#endif
