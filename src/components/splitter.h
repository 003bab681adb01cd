// What receiving units ask of the splitters on their ways.
#ifndef KESTO_COMPONENTS_SPLITTER_H
#define KESTO_COMPONENTS_SPLITTER_H

#include <cstdint>
#include <optional>

#include "AUEglobals.h"

// Quantities at both outputs of a splitter for a quantity at its input. Reports what is missing and gives nothing back.
struct SplitFlow {
    float first;
    float second;
};
std::optional<SplitFlow> splitFlow(std::int32_t id, AUEglobals* Globals, float quantity);

#endif
