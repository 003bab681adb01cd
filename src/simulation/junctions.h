// Junction and mixer, the two components that take any number of inputs: sums in the order of the senders.
#ifndef KESTO_SIMULATION_JUNCTIONS_H
#define KESTO_SIMULATION_JUNCTIONS_H

#include "AUEglobals.h"
#include "components/lookup.h"

// Adds an input's quantity, and its load in the place of the quality.
inline void addInput(Signal& sum, Signal input) {
    sum.quantity += input.quantity;
    sum.quality += input.quantity * input.quality;
}

inline Signal junction(Signal sum) {
    return {sum.quantity, -1.0F};
}

// Quality is load by quantity, rounded to a whole number; below a tenth of a unit the water is taken for a tenth.
inline Signal mixer(Signal sum) {
    const auto quantity = static_cast<double>(sum.quantity);
    const double divisor = quantity > 0.1 ? quantity : 0.1;
    return {sum.quantity, static_cast<float>(nint(static_cast<double>(sum.quality) / divisor))};
}

#endif
