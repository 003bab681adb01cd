// What the command line adds to a model's file.
#pragma once

#include <string>
#include <vector>

namespace kesto {

struct ReadOptions {
    std::vector<std::string> scenarios;  // of the model, in order: later ones win
    std::vector<std::string> set;        // as in tank.size=3000: win over scenarios
    std::string baseline;                // a scenario that wins over all of these; empty: none
    std::string from, to;                // first and last day of the run; empty: the model's
    std::string statesFrom;              // folder of results whose states the run goes on from; empty: initial ones
    bool approximate = false;            // go on although the states do not hold all that components remember
    std::vector<std::string> accept;     // warnings, in addition to those that the model accepts
};

}  // namespace kesto
