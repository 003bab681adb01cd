// Who reads whose signals, and what was left in which slot: the network as the blocks of steps need it.
#ifndef KESTO_SIMULATION_WIRING_H
#define KESTO_SIMULATION_WIRING_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "simulation.h"
#include "simulation/dispatch.h"

// The driver's four buffers, through which one component after the other passes.
enum Slot : std::size_t { kIn1, kIn2, kOut1, kOut2, kSlots };

// A sequence of signals, one a step, that somebody reads: what a component had in a slot.
struct Reading {
    std::size_t sequence;  // component's position * kSlots + slot
    bool stepBack;         // since that component comes later, or is the reader itself
};

class Wiring {
  public:
    Wiring(const Lookups& lookups, const std::vector<std::int32_t>& CompntId, const CRossConnection& connections);

    struct Component {
        const ComponentRow* row;
        const ComponentType* type;    // null: junction or mixer
        std::vector<Reading> inputs;  // of a junction or mixer, in the order of the senders
        bool isFilled[2];             // whether a connection brings this input
        Reading input[2];
    };
    const std::vector<Component>& components() const { return components_; }

    // Slots that are read without having been filled in the step. Their quality is what the component before left
    // there, and their quantity that of no signal, unless the component sets it.
    struct Leftover {
        std::size_t sequence;
        Reading left;
        bool hasQuantity;
    };
    const std::vector<Leftover>& leftovers() const { return leftovers_; }

    // What is in a slot when a step has ended.
    Reading last(Slot slot) const { return last_[slot]; }

    // Sequences that are read, in ascending order; among them perhaps those of nobody: what the slots were before
    // anybody filled them, and of nothing: what no output delivers.
    const std::vector<std::size_t>& read() const { return read_; }
    std::size_t ofNobody() const { return components_.size() * kSlots; }
    std::size_t ofNothing() const { return ofNobody() + kSlots; }

  private:
    void readInputs(std::size_t position, const CRossConnection& connections);
    void sortRead();
    void findLeftovers(Slot slot);
    bool fills(const Component& component, Slot slot) const;
    bool needs(std::size_t position, Slot slot) const;

    std::vector<Component> components_;
    std::vector<Leftover> leftovers_;
    Reading last_[kSlots];
    std::vector<std::size_t> read_;
};

#endif
