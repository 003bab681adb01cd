// What the command line puts in place of the model file's values.
#pragma once

#include <string>
#include <vector>

namespace kesto {

struct ReadOptions {
    std::vector<std::string> set;  // as in tank.size=3000
    std::string from, to;          // first and last day of the run; empty: the model's
};

}  // namespace kesto
