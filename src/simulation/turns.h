// One step by turns: component after component in the order of calculation, each form bound at its turn and run at
// once, so that errors come in that order.
#ifndef KESTO_SIMULATION_TURNS_H
#define KESTO_SIMULATION_TURNS_H

#include <array>
#include <cstddef>
#include <vector>

#include "components/model.h"
#include "simulation/dispatch.h"
#include "simulation/run.h"

// The driver's four buffers, through which one component after the other passes.
enum Slot : std::size_t { kIn1, kIn2, kOut1, kOut2, kSlots };
using Slots = std::array<Signal, kSlots>;

// A task is one part of a component, with its form if it has one.
inline std::size_t taskOf(std::size_t position, Part part) {
    return kParts * position + static_cast<std::size_t>(part);
}
inline std::size_t positionOf(std::size_t task) {
    return task / kParts;
}

// All components of a run in the order of calculation, with the forms that were bound in one step.
struct BoundNetwork {
    explicit BoundNetwork(std::size_t count) : components(count), tasks(kParts * count), left(count) {}

    struct Component {
        const ComponentRow* row = nullptr;
        const ComponentType* type = nullptr;  // null: a junction or mixer
    };
    std::vector<Component> components;
    std::vector<Bound> tasks;
    std::vector<Slots> left;  // what was in the slots after each component
    Notes notes;
};

// Computes the current step. On success every component is bound. May throw std::bad_alloc.
std::int32_t takeTurns(Run& run, Step& step, BoundNetwork& network);

#endif
