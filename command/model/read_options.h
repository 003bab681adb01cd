// What the command line adds to a model's file.
#pragma once

#include <string>
#include <vector>

namespace kesto {

struct ReadOptions {
    std::vector<std::string> scenarios;  // of the model, in order: later ones win
    std::vector<std::string> set;        // as in tank.size=3000: win over scenarios
    std::string from, to;                // first and last day of the run; empty: the model's
    std::vector<std::string> accept;     // warnings, in addition to those that the model accepts
};

}  // namespace kesto
