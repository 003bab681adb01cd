// How steps are computed in blocks: in which order, how many at a time, and where each signal stands meanwhile.
//
// Each sequence of signals that is read has an array: element 0 is the signal of the step before the block, then one a
// step. A component later in the order of calculation than the sender reads from element 1 (this step), an earlier one
// from element 0 (the step before). Sequences that are never in use at the same time share an array.
#ifndef KESTO_SIMULATION_PLAN_H
#define KESTO_SIMULATION_PLAN_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "simulation/lifetimes.h"
#include "simulation/schedule.h"
#include "simulation/turns.h"
#include "simulation/wiring.h"

// The memory of all arrays. A place in it is that of the element for the first step of a block.
struct ArrayLayout {
    Places arrays;
    std::size_t length = 0;  // of each array

    std::size_t place(std::size_t sequence) const { return arrays.of[sequence] * length + 1; }
    std::size_t place(const Reading& reading) const { return place(reading.sequence) - (reading.stepBack ? 1 : 0); }
    // Two more take signals that are never read.
    std::size_t unread(Slot slot) const { return (arrays.count + (slot == kOut2 ? 1 : 0)) * length; }
    std::size_t elements() const { return (arrays.count + 2) * length; }
};

// Copies a quality to where it is read, perhaps with the quantity of no signal, or copies the whole signal.
struct Transfer {
    enum class Part { Quality, QualityOfNone, Whole };
    std::size_t task;
    bool isBefore;  // done before the task, else after it
    Part part;
    std::size_t target;  // places
    std::size_t source;
};

struct PlanOptions {
    bool byTurns;              // one step at a time, in the order of calculation
    std::int32_t blockLength;  // as for simulate
    std::int32_t steps;        // that there are, at least 1
};

struct Plan {
    // May throw std::bad_alloc.
    Plan(const BoundNetwork& network, const CRossConnection& connections, const PlanOptions& options);

    bool byTurns;
    Wiring wiring;
    Schedule schedule;
    std::int32_t blockLength;
    ArrayLayout layout;
    std::vector<Transfer> transfers;         // in the order of their tasks
    std::vector<std::size_t> transferStart;  // of each task's; one more at the end

    // The place of a component's signals.
    std::size_t placeOf(std::size_t position, Slot slot) const;
    std::span<const Transfer> transfersOf(std::size_t task) const {
        return std::span(transfers).subspan(transferStart[task], transferStart[task + 1] - transferStart[task]);
    }
};

#endif
