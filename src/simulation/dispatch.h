// Which type is which: the one list of component types.
#ifndef KESTO_SIMULATION_DISPATCH_H
#define KESTO_SIMULATION_DISPATCH_H

#include "components.h"

// All that a component may be handed in one step. The four signals are the driver's buffers: what a component leaves
// unset holds what the one before it left, but for the quantities.
struct Step {
    std::int32_t id = 0;
    AUEglobals* Globals = nullptr;
    const InstInfo* Mult = nullptr;
    const RCVTOLEAFS* Receivers = nullptr;
    Signal in1{};
    Signal in2{};
    Signal out1{};
    Signal out2{};
};

struct ComponentType {
    std::int32_t code;
    const char* tag;            // opens the message about a wrong number of inputs
    std::int32_t inputs;        // how many the type requires; kAnyInputs: not checked
    void (*potentials)(Step&);  // null: books none
    void (*outputs)(Step&);     // null: leaves its outputs unset
};

inline constexpr std::int32_t kAnyInputs = -1;

// The type with a code; null when there is none.
const ComponentType* findType(std::int32_t code);

#endif
