// Random networks in which every component has all that its type can ask for.
#ifndef KESTO_TESTS_NETWORK_H
#define KESTO_TESTS_NETWORK_H

#include <functional>
#include <utility>
#include <vector>

#include "model.h"

struct NetworkOptions {
    bool delays = true;     // delays, quota limiters and loops
    bool radiation = true;  // units whose estimate depends on all calls before
    bool tree = true;       // sources may be traced
    int mostSteps = 12;
    int mostComponents = 12;
};

// A random integer from the first number to one below the second.
using Dice = std::function<int(int, int)>;

// All ids have this many digits.
inline constexpr std::int32_t kFirstId = 1000001;

Model makeNetwork(NetworkOptions options, const Dice& dice);

// A component's specifications, in ascending order, as every model's chained search wants them.
void addBrand(Model& model, float brand, const std::vector<std::pair<int, float>>& values);

std::int32_t idOf(const ComponentRow& row);

// The order of calculation of a network without loops: table order among those whose suppliers are placed.
std::vector<std::size_t> orderOf(const Model& model);

#endif
