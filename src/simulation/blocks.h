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
#include "simulation/schedule.h"
#include "simulation/wiring.h"

// The driver's four buffers.
using Slots = std::array<Signal, kSlots>;

class Blocks {
  public:
    // After step CurStep has been evaluated by the list of components. `left` is what was in the slots after each of
    // them. May throw std::bad_alloc.
    Blocks(Step& step, CRossSignal& signals, const CRossConnection& connections, const std::vector<Slots>& left);

    // Runs steps from CurStep on, those before `end`, which lie within the series. CurStep is then the first step that
    // has not run: `end`, or one that is to be evaluated by the list of components. KESTO_RUN_FAILURE: a component has
    // stopped the run in step CurStep.
    std::int32_t run(std::int32_t end);

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

    void layOut(const std::vector<Slots>& left);
    // The elements for the steps of the block, of the sequence itself or as somebody reads it; null: it has no array.
    Signal* array(std::size_t sequence);
    const Signal* array(const Reading& reading);
    void addTransfers();
    std::size_t firstTask(std::size_t position) const;
    void bind();
    void bindSum(std::size_t position);
    std::vector<Need> needs() const;
    void order();

    std::int32_t lookAhead(std::int32_t end) const;
    std::int32_t findDates(std::int32_t begin, std::int32_t length);
    void radiate(const Block& block) const;
    bool runBlock(const Block& block) const;
    void runTask(std::size_t task, const Block& block) const;
    void transfer(std::size_t task, bool isBefore, const Block& block) const;
    void leave(std::int32_t j);

    AUEglobals* Globals_;
    Step& step_;
    CRossSignal& signals_;
    const CRossConnection& connections_;
    Wiring wiring_;
    Notes notes_;
    std::vector<std::int32_t> places_;  // of each sequence among the arrays; -1: without
    std::vector<Signal> arrays_;
    std::vector<Signal*> readBack_;  // arrays whose first element is read
    std::vector<Signal> unread_;     // what nobody reads goes here
    std::vector<Task> tasks_;
    std::vector<Ports> ports_;  // by component
    std::vector<Transfer> transfers_;
    std::vector<std::size_t> transferStart_;  // of each task in transfers_
    Schedule schedule_;
    std::vector<Date> dates_;
    std::int32_t blockLength_ = 0;
};

#endif
