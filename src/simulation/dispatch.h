// Which type is which: the one list of component types.
#ifndef KESTO_SIMULATION_DISPATCH_H
#define KESTO_SIMULATION_DISPATCH_H

#include <array>
#include <span>

#include "components/model.h"

struct ComponentType {
    std::int32_t code;
    const char* tag;                             // opens the message about a wrong number of inputs
    std::int32_t inputs;                         // how many the type requires; kAnyInputs: not checked
    const Form* forms[3];                        // in the order in which they act within a step; null: no more
    std::array<std::int32_t, 2> leafTypes = {};  // of a receiving unit: the types that its water is traced to

    bool isReceiver() const { return leafTypes[0] != 0; }
};

inline constexpr std::int32_t kAnyInputs = -1;

std::span<const ComponentType> componentTypes();

// The type with a code; null when there is none.
const ComponentType* findType(std::int32_t code);

#endif
