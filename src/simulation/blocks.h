// Many steps at a time: forms that were bound in an earlier step run over blocks of steps, in the order of a plan.
#ifndef KESTO_SIMULATION_BLOCKS_H
#define KESTO_SIMULATION_BLOCKS_H

#include <cstdint>
#include <vector>

#include "simulation/plan.h"
#include "simulation/run.h"
#include "simulation/turns.h"

class Blocks {
  public:
    // For the steps from CurStep on; the one before it has bound the network. May throw std::bad_alloc.
    Blocks(Run& run, Step& step, const BoundNetwork& network, const Plan& plan);

    // Runs the steps before `end`, all of which lie within the series. CurStep is then the first step that has not run:
    // `end`, or one that must go by turns. KESTO_RUN_FAILURE: a component has stopped the run in step CurStep.
    std::int32_t run(std::int32_t end);

  private:
    // A task, and its signals in the first step of a block.
    struct Entry {
        Bound bound;
        Ports ports;
        bool hasTransfers;
    };

    void fillEntries();
    bool runBlock(const Block& block, bool isLast);
    void runEntry(std::size_t place, const Block& block, bool isLast);
    void transfer(std::size_t place, bool isBefore, const Block& block);
    void storeSlots(std::int32_t j);

    AUEglobals* Globals_;
    Run& run_;
    Step& step_;
    const BoundNetwork& network_;
    const Plan& plan_;
    std::vector<Signal> signals_;           // all arrays of the plan
    std::vector<Entry> entries_;            // in the order of the schedule
    std::vector<const Signal*> sumInputs_;  // of all junctions and mixers, each list with a null at its end
    std::vector<float> blockArrays_;
    std::vector<Date> dates_;  // of all steps, when some form needs them
};

#endif
