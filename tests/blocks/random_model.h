// Networks of all types at random, with all that makes a step depend on another: cycles through delays, tables in any
// order, linked stores, shared groups, traced sources, lone and doubled connections, ids and memory that stand for two.
#ifndef KESTO_TESTS_RANDOM_MODEL_H
#define KESTO_TESTS_RANDOM_MODEL_H

#include <cstdint>
#include <random>
#include <vector>

#include "model.h"

// Whole numbers of a generator whose sequence the language fixes.
class Numbers {
  public:
    explicit Numbers(std::uint32_t seed) : engine_(seed) {}

    // From low up to, not including, end.
    int operator()(int low, int end) {
        return low + static_cast<int>(engine_() % static_cast<std::uint32_t>(end - low));
    }
    bool oneIn(int n) { return (*this)(0, n) == 0; }

  private:
    std::mt19937 engine_;
};

// One series of the host that is to lie in the memory of another, some elements on.
struct Overlap {
    Table table;
    std::size_t entry;
    Table other;
    std::size_t otherEntry;
    int elements;  // 0 or 1
};

struct RandomModel {
    Model model;  // each series has one value more than the model has steps
    std::vector<Overlap> overlaps;
    std::vector<std::pair<std::int32_t, std::int32_t>> calls;  // first and last step, on the same record
};

RandomModel makeRandomModel(std::uint32_t seed);

#endif
