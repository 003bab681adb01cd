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

// One half of a component: what computes its outputs and states, or what books its potentials.
struct Task {
    std::array<Bound, 2> forms{};
};
inline std::size_t taskOf(std::size_t position, Half half) {
    return 2 * position + (half == Half::Potentials ? 1 : 0);
}

// All components of a run in the order of calculation, with the forms that were bound in one step.
struct BoundNetwork {
    explicit BoundNetwork(std::size_t count) : components(count), tasks(2 * count), left(count) {}

    struct Component {
        const ComponentRow* row = nullptr;
        const ComponentType* type = nullptr;  // null: a junction or mixer
    };
    std::vector<Component> components;
    std::vector<Task> tasks;
    std::vector<Slots> left;  // what was in the slots after each component
    Notes notes;
};

// The current step. When it succeeds the network has all its components. May throw std::bad_alloc.
std::int32_t takeTurns(Run& run, Step& step, BoundNetwork& network);

#endif
