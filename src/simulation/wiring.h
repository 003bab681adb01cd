// Which component reads whose signals, and what was left in which slot: the network as blocks of steps need it.
#ifndef KESTO_SIMULATION_WIRING_H
#define KESTO_SIMULATION_WIRING_H

#include <cstddef>
#include <span>
#include <vector>

#include "simulation/turns.h"

// A sequence of signals, one a step, that is read: what a component had in a slot.
struct Reading {
    std::size_t sequence;  // component's position * kSlots + slot
    bool stepBack;         // of the step before: that component comes later, or is the reader itself
};

class Wiring {
  public:
    Wiring(const std::vector<BoundNetwork::Component>& components, const CRossConnection& connections);

    std::size_t size() const { return inputs_.size(); }

    // The inputs of a type that takes at most two; null where no connection brings one.
    const Reading* input(std::size_t position, Slot slot) const {
        const Input& input = inputs_[position][slot];
        return input.isFilled ? &input.reading : nullptr;
    }
    // Those of a junction or mixer, in the order of the senders.
    std::span<const Reading> sumInputs(std::size_t position) const {
        return std::span(sumInputs_).subspan(sumStart_[position], sumStart_[position + 1] - sumStart_[position]);
    }

    // Slots that are read without having been filled by their component. The quality is what an earlier component left
    // there; the quantity is that of no signal, unless the component sets it.
    struct Leftover {
        std::size_t sequence;
        Reading left;
        bool hasQuantity;
    };
    const std::vector<Leftover>& leftovers() const { return leftovers_; }

    // What is in a slot when a step has ended.
    Reading last(Slot slot) const { return last_[slot]; }

    // Which sequences are read. Two kinds have no component: "of nobody", the slots before any component filled them,
    // and "of nothing", what no output delivers.
    bool isRead(std::size_t sequence) const { return isRead_[sequence]; }
    // Those that are read a step back.
    const std::vector<std::size_t>& readBack() const { return readBack_; }
    std::size_t ofNobody() const { return size() * kSlots; }
    std::size_t ofNothing() const { return ofNobody() + kSlots; }
    std::size_t sequences() const { return ofNothing() + 1; }

  private:
    struct Input {
        bool isFilled = false;
        Reading reading{};
    };

    void readInputs(const std::vector<BoundNetwork::Component>& components, const CRossConnection& connections,
                    std::size_t position);
    void findLeftovers(const std::vector<BoundNetwork::Component>& components, Slot slot);
    void note(const Reading& reading);
    bool fills(const ComponentType* type, std::size_t position, Slot slot) const;
    bool needs(const ComponentType* type, std::size_t position, Slot slot) const;

    std::vector<std::array<Input, 2>> inputs_;  // by position
    std::vector<Reading> sumInputs_;
    std::vector<std::size_t> sumStart_;  // of each position in sumInputs_; one more at the end
    std::vector<Leftover> leftovers_;
    std::array<Reading, kSlots> last_{};
    std::vector<bool> isRead_;
    std::vector<std::size_t> readBack_;
};

#endif
