#include "simulation/wiring.h"

#include <algorithm>

namespace {

// What the forms of a type do to its outputs.
Sets outputsOf(const ComponentType* type) {
    if (!type) return Sets::Out1;
    for (const Form* const form : type->forms) {
        if (form && form->part == Part::Outputs) return form->sets;
    }
    return Sets::Nothing;
}

}  // namespace

Wiring::Wiring(const std::vector<BoundNetwork::Component>& components, const CRossConnection& connections)
    : inputs_(components.size()), isRead_(components.size() * kSlots + kSlots + 1, false) {
    sumStart_.reserve(components.size() + 1);
    for (std::size_t i = 0; i < components.size(); ++i)
        readInputs(components, connections, i);
    sumStart_.push_back(sumInputs_.size());
    for (const Slot slot : {kIn1, kIn2, kOut1, kOut2})
        findLeftovers(components, slot);
    std::sort(readBack_.begin(), readBack_.end());
    readBack_.erase(std::unique(readBack_.begin(), readBack_.end()), readBack_.end());
}

void Wiring::readInputs(const std::vector<BoundNetwork::Component>& components, const CRossConnection& connections,
                        std::size_t position) {
    sumStart_.push_back(sumInputs_.size());
    const std::size_t begin = connections.columnStart[position];
    const std::size_t end = connections.columnStart[position + 1];
    for (std::size_t c = begin; c < end; ++c) {
        const CRossConnection::Cell& cell = connections.cells[c];
        const auto sender = static_cast<std::size_t>(cell.sender);
        const std::int32_t output = outputSlot(cell.connCode);
        const bool delivers = output == 0 || output == 1;
        const Reading reading{delivers ? sender * kSlots + (output == 0 ? kOut1 : kOut2) : ofNothing(),
                              delivers && sender >= position};
        if (!components[position].type) {
            sumInputs_.push_back(reading);
        } else {
            // Of two on one port the first stays; a lone one on port 2 does not count.
            const std::int32_t slot = inputSlot(cell.connCode);
            if (slot < 0 || (slot == 1 && end - begin != 2)) continue;
            Input& input = inputs_[position][static_cast<std::size_t>(slot)];
            if (input.isFilled) continue;
            input = {true, reading};
        }
        note(reading);
    }
}

void Wiring::note(const Reading& reading) {
    isRead_[reading.sequence] = true;
    if (reading.stepBack) readBack_.push_back(reading.sequence);
}

bool Wiring::fills(const ComponentType* type, std::size_t position, Slot slot) const {
    if (slot == kIn1 || slot == kIn2) return inputs_[position][slot].isFilled;
    const Sets sets = outputsOf(type);
    return slot == kOut1 ? sets != Sets::Nothing : sets == Sets::Both;
}

bool Wiring::needs(const ComponentType* type, std::size_t position, Slot slot) const {
    if (slot == kOut1 || slot == kOut2) return isRead_[position * kSlots + slot];
    return type && (slot == kIn1 ? type->inputs != 0 : type->inputs == 2);
}

void Wiring::findLeftovers(const std::vector<BoundNetwork::Component>& components, Slot slot) {
    std::size_t last = size();
    for (std::size_t i = size(); i-- > 0 && last == size();) {
        if (fills(components[i].type, i, slot)) last = i;
    }
    last_[slot] = {last * kSlots + slot, false};
    isRead_[last_[slot].sequence] = true;
    Reading left{last * kSlots + slot, last < size()};
    for (std::size_t i = 0; i < size(); ++i) {
        const std::size_t sequence = i * kSlots + slot;
        const ComponentType* const type = components[i].type;
        if (fills(type, i, slot)) {
            left = {sequence, false};
        } else if (needs(type, i, slot)) {
            const bool hasQuantity = slot == kOut2 && outputsOf(type) == Sets::Out1AndQuantity2;
            leftovers_.push_back({sequence, left, hasQuantity});
            isRead_[sequence] = true;
            note(left);
        }
    }
}
