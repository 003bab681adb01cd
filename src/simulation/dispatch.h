// Which type is which: the one list of component types.
#ifndef KESTO_SIMULATION_DISPATCH_H
#define KESTO_SIMULATION_DISPATCH_H

#include "components/model.h"

struct ComponentType {
    std::int32_t code;
    const char* tag;       // opens the message about a wrong number of inputs
    std::int32_t inputs;   // how many the type requires; kAnyInputs: not checked
    const Form* forms[3];  // in the order in which they act within a step; null: no more
};

inline constexpr std::int32_t kAnyInputs = -1;

// The type with a code; null when there is none.
const ComponentType* findType(std::int32_t code);

#endif
