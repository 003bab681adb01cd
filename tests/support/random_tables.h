// The tables of a random model that go by groups, brands and components: complete, unless it is an odd one.
#ifndef KESTO_TESTS_RANDOM_TABLES_H
#define KESTO_TESTS_RANDOM_TABLES_H

#include <array>
#include <vector>

#include "random_choices.h"

class RandomTables {
  public:
    RandomTables(const RandomOptions& options, const Choices& draw, Model& model)
        : options_(options), draw_(draw), model_(model) {}

    // Use and weather. With the key 0 there are no potentials.
    void addGroup(std::int32_t key);
    // A day whose minimum is above its maximum, which stops the run.
    void spoilLastGroup();
    void addBrand(int brand);
    // States, demands, thresholds and multipliers, whether the type reads them or not.
    void addComponent(std::int32_t id);

  private:
    struct Range {
        Table table;
        int low, high;
    };
    void add(std::int32_t id, const Range& range, std::size_t perStep = 1);

    const RandomOptions& options_;
    const Choices& draw_;
    Model& model_;
    std::array<std::vector<float>, kTables.size()> patterns_;
};

#endif
