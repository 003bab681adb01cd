// What the engine remembers from one step to the next that the states of the stores do not hold.
#pragma once

#include <string>
#include <vector>

#include "model.h"

namespace kesto {

struct Memory {
    int component;
    std::string what;  // for a message: "a delay holds what is on its way"
};

// Empty: a run that goes on from the states of a day is the run in one piece, bit for bit. `recorded` are the outputs
// that somebody will look at.
std::vector<Memory> memoriesBesideStates(const Model& model, const std::vector<OutputPort>& recorded);

}  // namespace kesto
