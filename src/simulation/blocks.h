// Many steps at a time: from the second step on, components run from bound forms, over a block of steps at a time
// wherever the network allows it.
//
// Each sequence of signals that is read has an array: the signal of the step before the block, then one a step. Who
// comes after the sender reads from the second element on, who comes before it from the first.
#ifndef KESTO_SIMULATION_BLOCKS_H
#define KESTO_SIMULATION_BLOCKS_H

#include <array>
#include <cstdint>
#include <vector>

#include "components/model.h"
#include "simulation.h"
#include "simulation/lifetimes.h"
#include "simulation/schedule.h"
#include "simulation/wiring.h"

// The driver's four buffers.
using Slots = std::array<Signal, kSlots>;

class Blocks {
  public:
    // For the steps after CurStep, which has been evaluated by the list of components, and before `end`; all lie within
    // the series. `left` is what was in the slots after each component. May throw std::bad_alloc.
    Blocks(Step& step, const std::vector<std::int32_t>& CompntId, CRossSignal& signals,
           const CRossConnection& connections, const std::vector<Slots>& left, std::int32_t end);

    // Runs them, from CurStep on. CurStep is then the first step that has not run: `end`, or one that is to be
    // evaluated by the list of components. KESTO_RUN_FAILURE: a component has stopped the run in step CurStep.
    std::int32_t run();

  private:
    // Half of a component: one books its potentials, the other does all else.
    struct Task {
        std::array<Bound, 2> forms{};
    };
    // Brings a quality to where it is read, perhaps beside the quantity of no signal, or the whole signal.
    enum class Part { Quality, QualityOfNone, Whole };
    struct Transfer {
        std::size_t task;
        bool isBefore;  // the task; else after it
        Part part;
        Signal* target;
        const Signal* source;
    };

    void bind(const std::vector<std::int32_t>& CompntId);
    std::size_t firstTask(std::size_t position) const;
    void order();
    std::vector<Need> needs() const;
    std::vector<Lifetime> lifetimes() const;
    void layOut(const std::vector<Slots>& left);
    // The elements for the steps of the block, of the sequence itself or as somebody reads it.
    Signal* array(std::size_t sequence);
    const Signal* array(const Reading& reading);
    void connect();
    void bindSum(std::size_t position);
    void addTransfers();

    std::int32_t lookAhead();
    void radiate(const Block& block) const;
    bool runBlock(const Block& block, bool isLast);
    void runTask(std::size_t task, const Block& block, bool isLast);
    void transfer(std::size_t task, bool isBefore, const Block& block) const;
    void leave(std::int32_t j);

    AUEglobals* Globals_;
    Step& step_;
    CRossSignal& signals_;
    const CRossConnection& connections_;
    std::int32_t end_;
    Wiring wiring_;
    Notes notes_;
    std::vector<Task> tasks_;
    Schedule schedule_;
    std::vector<Ports> ports_;  // by component
    std::vector<Transfer> transfers_;
    std::vector<std::size_t> transferStart_;  // of each task in transfers_

    std::int32_t blockLength_ = 0;
    std::size_t arrayLength_ = 0;
    Places places_;  // of each sequence's array
    std::vector<Signal> arrays_;
    std::vector<Signal*> readBack_;  // arrays whose first element is read
    std::vector<Signal> unread_;     // what nobody reads goes here
    std::vector<float> blockArrays_;
    std::vector<Date> dates_;  // of all steps, when some form needs them
};

#endif
