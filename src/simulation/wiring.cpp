#include "simulation/wiring.h"

#include <algorithm>

#include "components/lookup.h"
#include "simulation/junctions.h"

namespace {

// What the forms of a type do to its outputs.
Sets outputsOf(const ComponentType* type) {
    if (!type) return Sets::Out1;
    for (const Form* const form : type->forms) {
        if (form && !form->books) return form->sets;
    }
    return Sets::Nothing;
}

}  // namespace

Wiring::Wiring(const Lookups& lookups, const std::vector<std::int32_t>& CompntId, const CRossConnection& connections) {
    components_.reserve(CompntId.size());
    for (std::size_t i = 0; i < CompntId.size(); ++i) {
        const ComponentRow* const row = lookups.findRow(CompntId[i]);
        components_.push_back({row, findType(nint(row->techid)), {}, {}, {}});
    }
    for (std::size_t i = 0; i < components_.size(); ++i)
        readInputs(i, connections);
    sortRead();
    for (const Slot slot : {kIn1, kIn2, kOut1, kOut2})
        findLeftovers(slot);
}

void Wiring::sortRead() {
    std::sort(read_.begin(), read_.end());
    read_.erase(std::unique(read_.begin(), read_.end()), read_.end());
}

void Wiring::readInputs(std::size_t position, const CRossConnection& connections) {
    Component& component = components_[position];
    const std::size_t begin = connections.columnStart[position];
    const std::size_t end = connections.columnStart[position + 1];
    for (std::size_t c = begin; c < end; ++c) {
        const CRossConnection::Cell& cell = connections.cells[c];
        const auto sender = static_cast<std::size_t>(cell.sender);
        const std::int32_t output = outputSlot(cell.connCode);
        const bool delivers = output == 0 || output == 1;
        const Reading reading{delivers ? sender * kSlots + (output == 0 ? kOut1 : kOut2) : ofNothing(),
                              delivers && sender >= position};
        if (!component.type) {
            component.inputs.push_back(reading);
        } else {
            // Of two on one port the first stays; a lone one on port 2 does not count.
            const std::int32_t input = inputSlot(cell.connCode);
            if (input < 0 || component.isFilled[input] || (input == 1 && end - begin != 2)) continue;
            component.isFilled[input] = true;
            component.input[input] = reading;
        }
        read_.push_back(reading.sequence);
    }
}

bool Wiring::fills(const Component& component, Slot slot) const {
    if (slot == kIn1 || slot == kIn2) return component.type && component.isFilled[slot];
    const Sets sets = outputsOf(component.type);
    return slot == kOut1 ? sets != Sets::Nothing : sets == Sets::Both;
}

bool Wiring::needs(std::size_t position, Slot slot) const {
    const std::size_t sequence = position * kSlots + slot;
    if (slot == kOut1 || slot == kOut2) return std::binary_search(read_.begin(), read_.end(), sequence);
    const ComponentType* const type = components_[position].type;
    return type && (slot == kIn1 ? type->inputs != 0 : type->inputs == 2);
}

void Wiring::findLeftovers(Slot slot) {
    std::size_t last = components_.size();
    for (std::size_t i = components_.size(); i-- > 0 && last == components_.size();) {
        if (fills(components_[i], slot)) last = i;
    }
    last_[slot] = {last * kSlots + slot, false};
    Reading left{last * kSlots + slot, last < components_.size()};
    std::vector<std::size_t> sequences{left.sequence};
    for (std::size_t i = 0; i < components_.size(); ++i) {
        const std::size_t sequence = i * kSlots + slot;
        if (fills(components_[i], slot)) {
            left = {sequence, false};
        } else if (needs(i, slot)) {
            const bool hasQuantity = slot == kOut2 && outputsOf(components_[i].type) == Sets::Out1AndQuantity2;
            leftovers_.push_back({sequence, left, hasQuantity});
            sequences.insert(sequences.end(), {sequence, left.sequence});
        }
    }
    read_.insert(read_.end(), sequences.begin(), sequences.end());
    sortRead();
}
