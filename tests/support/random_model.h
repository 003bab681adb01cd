// Random networks of all types of the engine: with all that makes one step depend on another, and on demand with all
// that a host can get wrong.
#ifndef KESTO_TESTS_RANDOM_MODEL_H
#define KESTO_TESTS_RANDOM_MODEL_H

#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "model.h"

// Where choices come from: a whole number from the first to one below the second. The first one is always the ordinary
// choice, so that a source that runs dry and gives nothing else makes a plain network.
using Dice = std::function<int(int, int)>;

// The same throws on every system.
Dice seededDice(std::uint32_t seed);

// Of the first component; all ids have as many digits.
inline constexpr std::int32_t kFirstId = 1000001;

struct RandomOptions {
    int mostSteps = 12;
    int mostComponents = 12;  // beside three sources, reservoirs and recorders
    bool delays = true;       // what remembers the steps of a call: delays and quota limiters
    bool loops = true;        // closed by delays
    bool radiation = true;    // units whose estimate depends on all calls of the process
    bool reservoirs = true;   // types that look for the reservoirs of their group, in the order of the table
    bool tree = true;         // sources may be traced
    std::span<const std::int32_t> types = {};  // to choose from, beside junctions and mixers; empty: all
    // What may stop a run or be read in two ways: odd ports, connections and ids that stand twice, what is missing,
    // shared memory, bad weather. Without it every run succeeds.
    bool odd = false;
    // For a source of few choices: so many values a series, over and over, the same ones for a whole table.
    int pattern = 0;
    std::function<float()> value = nullptr;  // in place of a value from the range that suits the model
};

struct RandomModel {
    Model model;
    std::vector<Overlap> overlaps;
    std::vector<std::pair<std::int32_t, std::int32_t>> calls;  // first and last step, on the same record
};

RandomModel makeRandomModel(const RandomOptions& options, const Dice& dice);

// An odd one, now and then of many steps.
RandomModel makeRandomModel(std::uint32_t seed);

#endif
