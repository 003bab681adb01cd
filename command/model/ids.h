// Ids for names: people use names, the engine numbers.
#pragma once

#include "diagnostics.h"
#include "model.h"

namespace kesto {

inline constexpr int kFirstComponentId = 1000001;  // all ids get seven digits: some rules compare them as text
inline constexpr int kLastId = (1 << 24) - 1;      // the record holds ids as floats, exact so far

// Numbers components and groups in file order, around the ids that the model fixes.
void numberModel(Model& model, Diagnostics& diagnostics);

}  // namespace kesto
