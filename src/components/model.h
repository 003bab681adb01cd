// What a model is made of.
//
// A model is a list of forms: one books the potentials of a component, another computes its outputs. A form is a small
// plain struct. Its constructor looks up all that it needs for one component, in the order in which errors must come;
// what it finds serves all steps. `run` then computes a range of steps, and is called for as many ranges as the run
// has. So each look-up and each formula is written once, whether steps are computed one by one or many at a time.
//
// Within a range the outputs come before the potentials, which read no more than the inputs and the states at the end
// of the step before, and before the tracing of sources, which also reads the qualities of others.
#ifndef KESTO_COMPONENTS_MODEL_H
#define KESTO_COMPONENTS_MODEL_H

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <optional>
#include <tuple>
#include <type_traits>
#include <vector>

#include "AUEglobals.h"
#include "components.h"
#include "components/lookup.h"
#include "solarrad.h"

// What the calendar says of a step.
struct Date {
    std::int32_t dayOfMonth;  // from 1
    std::int32_t dayOfYear;   // from 0
};

// An array with one value for each step of a block: computed for a form, or handed over by one form of a component to
// the next.
struct BlockArray {
    std::ptrdiff_t index = 0;
};

// Consecutive steps: a whole block of steps, or a part of it. A block that begins with step 0, or outside the series,
// has one step.
struct Block {
    std::int32_t begin;
    std::int32_t length;
    const Date* dates;        // of each step, when some form needs them
    float* arrays = nullptr;  // one after the other
    std::ptrdiff_t arrayLength = 1;
    std::int32_t offset = 0;  // of the first step in arrays by step of the whole block

    // A series from the block's first step on.
    template <typename Element>
    Element* now(Element* series) const {
        return series ? series + begin : nullptr;
    }
    // A state, from the end of the step before the block on; at step 0 that is the host's value in element 0.
    template <typename Element>
    Element* before(Element* series) const {
        return series + (begin > 0 ? begin - 1 : begin);
    }

    // Arrays by step of the whole block.
    float* part(BlockArray array) const { return arrays + array.index * arrayLength + offset; }
    template <typename Element>
    Element* part(Element* array) const {
        return array + offset;
    }
    // One step of it.
    Block step(std::int32_t j) const {
        return {begin + j, 1, dates ? dates + j : nullptr, arrays, arrayLength, offset + j};
    }

    // Adds to a potential in one step, the j-th of the block. Nothing is booked without a potential. The amount is
    // added in its own precision and the sum is rounded to single.
    template <std::floating_point Amount>
    void add(float* potential, std::int32_t j, Amount amount) const {
        if (!potential) return;
        float& sum = potential[begin + j];
        sum = static_cast<float>(static_cast<Amount>(sum) + amount);
    }

    // Adds to a potential in each step what `amount` gives for the multiplier, or for the multiplier and the step's
    // place in the block. A constant zero leaves the memory untouched: a sum that single amounts make is never -0.0, so
    // adding zero would change nothing.
    template <std::invocable<float> Amount>
    void book(float* potential, const float* m, const Amount& amount) const {
        if (!m && amount(1.0F) == 0) return;
        book(potential, m, [&](float factor, std::int32_t) { return amount(factor); });
    }
    template <std::invocable<float, std::int32_t> Amount>
    void book(float* potential, const float* m, const Amount& amount) const {
        if (!potential) return;
        if (!m) {
            for (std::int32_t j = 0; j < length; ++j)
                add(potential, j, amount(1.0F, j));
        } else {
            for (std::int32_t j = 0; j < length; ++j)
                add(potential, j, amount(m[begin + j], j));
        }
    }
    // Energy is never left out: green areas add it in double, which a sum can leave as -0.0, and zero makes that 0.0.
    template <std::invocable<float> Amount>
    void bookEnergy(float* NrgPot, const float* m, const Amount& amount) const {
        book(NrgPot, m, [&](float factor, std::int32_t) { return amount(factor); });
    }
    // The same for potentials that no multiplier scales.
    template <std::invocable<std::int32_t> Amount>
    void book(float* potential, const Amount& amount) const {
        book(potential, nullptr, [&](float, std::int32_t j) { return amount(j); });
    }
    void bookConstant(float* potential, float amount) const {
        book(potential, nullptr, [&](float) { return amount; });
    }
};

// A component's signals, one element a step of the block.
struct Ports {
    const Signal* in1;
    const Signal* in2;
    Signal* out1;
    Signal* out2;
};

// The day's extremes of temperature [degC], which models that depend on radiation read.
struct Temperatures {
    const float* tMin;
    const float* tMax;
};

// A form bound to its component, with its type erased.
struct Bound {
    void (*run)(const void* form, const Block& block, const Ports& ports) = nullptr;
    const void* form = nullptr;
};

// What the forms that are bound in one step use beyond their own inputs.
struct Notes {
    struct Access {
        const void* memory;  // first element of a series
        std::size_t task;
        bool writes;  // at this step; else reads at the previous one
    };
    // Adds to the ranges of temperature that all radiation units of the process share. The radiation of later steps
    // must be computed before the task runs.
    struct RadiationUnit {
        std::size_t task;
        const DayTable* Rpot;
        Temperatures temperatures;
        BlockArray shortWave;

        void radiate(const Block& block, std::int32_t j) const;
    };

    std::size_t task = 0;                  // that is being bound
    std::optional<BlockArray> handedOver;  // of the component that is being bound
    std::vector<float> arrays;             // one value for each block array: that of the step in which forms are bound
    std::vector<Access> accesses;
    std::vector<RadiationUnit> radiationUnits;  // in the order of calculation
    std::vector<Temperatures> temperatures;     // the run stops in a step with a minimum above the maximum
    bool needsDates = false;
    bool canStop = false;                        // by what it computes
    std::pmr::monotonic_buffer_resource memory;  // of the forms
};

// All that a component is handed in one step. The four signals are the driver's buffers: where a component leaves a
// quality unset, the one that an earlier component left stays.
struct Step {
    std::int32_t id = 0;
    const ComponentRow* row = nullptr;
    AUEglobals* Globals = nullptr;
    const Lookups* lookups = nullptr;
    Signal in1{};
    Signal in2{};
    Signal out1{};
    Signal out2{};
};

// Binds one form of a component at its turn in the current step. Once a look-up has failed, all further ones give
// nothing and leave the message alone; the form must not run then.
class Binder {
  public:
    Binder(const Step& step, Notes& notes)
        : lookups_(*step.lookups), Globals_(step.Globals), row_(step.row), id_(step.id), notes_(notes) {}

    bool failed() const { return failed_; }
    AUEglobals* record() const { return Globals_; }

    // The current step, for the form when it is bound.
    Block thisStep() const { return {Globals_->CurStep, 1, &date_, notes_.arrays.data()}; }

    // The component
    std::int32_t id() const { return id_; }
    std::int32_t key() const { return nint(row_->key); }
    std::int32_t type() const { return nint(row_->techid); }
    float size() const { return row_->size; }
    float timeStep() const { return Globals_->TimeStep; }
    const ComponentRow* row() const { return row_; }

    // The specifications of its brand, or of another component's.
    template <int... Numbers>
    auto specifications() {
        return specifications<Numbers...>(row_);
    }
    template <int... Numbers>
    std::tuple<decltype(static_cast<void>(Numbers), 0.0F)...> specifications(const ComponentRow* row) {
        const auto values = failed_ || !row ? std::nullopt : lookups_.readSpecifications<Numbers...>(nint(row->brand));
        if (!values) failed_ = true;
        return values ? std::tuple_cat(*values) : std::tuple_cat(std::array<float, sizeof...(Numbers)>{});
    }

    // Rows of other components. A reservoir may be missing, which is no failure.
    const ComponentRow* find(std::int32_t id);
    const ComponentRow* findReservoir(const ComponentRow* after = nullptr);
    // The same, but one whose id, cut to an integer, is -1 counts as none.
    const ComponentRow* findOrdinaryReservoir(const ComponentRow* after = nullptr);

    // A series that is read at the step; of the component's key id, of its own id, or of another one.
    const float* now(Series kind, std::int32_t id);
    const float* ofKey(Series kind) { return now(kind, key()); }
    const float* own(Series kind) { return now(kind, id()); }

    // A state: as it is read, at the end of the previous step, and as it is written.
    const float* before(Series kind, std::int32_t id);
    const float* before(Series kind) { return before(kind, id()); }
    float* after(Series kind);

    // The component's recorded signals, without and with a check of the step.
    Signal* record(Record kind);
    Signal* recordNow(Record kind);
    void checkStepOf(std::int32_t id);

    // A potential of its key; null when it has none.
    float* potential(Series kind);

    // The factors that scale its potentials, one a step; null when nothing does.
    const float* multiplier();

    const float* frequencies(std::int32_t group, std::int32_t kind, std::int32_t mostKinds);

    // The next group of a splitter's stores at or after place `from` of the table; -1 without one.
    std::int32_t findSplit(std::int32_t id, std::int32_t from) const { return lookups_.findSplit(id, from); }

    // Whether sources are traced; the component's paths to them, null without an entry.
    bool tracesSources() const { return lookups_.tracesSources(); }
    const Receiver* receiver() const { return lookups_.findReceiver(id()); }

    // The extremes of its key, checked against each other.
    Temperatures temperatures();

    // Asks for the dates of the steps. A current date beyond the calendar is reported; the form may still run.
    bool dates();

    // Fills a day table that is still empty.
    void fillOnFirstUse(DayTable& Rpot);

    // Incoming short-wave radiation. That of the current step is computed here, even if a later look-up fails.
    BlockArray shortWave(const DayTable& Rpot, Temperatures temperatures);

    // The form may report an error while it runs.
    void canStop();

    // Ends the look-ups, with an error to report or with one that has been reported.
    void error(const char* text);
    void giveUp() { failed_ = true; }

    // Room for an array that the form points to, for as long as the form lives.
    template <typename Element>
    Element* array(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<Element>);
        return std::pmr::polymorphic_allocator<Element>(&notes_.memory).allocate(count);
    }
    template <typename Element>
    const Element* keep(const std::vector<Element>& elements) {
        Element* const kept = array<Element>(elements.size());
        std::uninitialized_copy(elements.begin(), elements.end(), kept);
        return kept;
    }

    // What one form of the component fills and the next one reads.
    BlockArray handedOver();

  private:
    BlockArray newArray();
    void note(const void* memory, bool writes);

    const Lookups& lookups_;
    AUEglobals* Globals_;
    const ComponentRow* row_;
    std::int32_t id_;
    Notes& notes_;
    bool failed_ = false;
    Date date_{};
};

// What a form does to the outputs of its component.
enum class Sets { Nothing, Out1, Both, Out1AndQuantity2 };

// What the forms of a component do, at most one form each. The quality that a receiving unit traces flows with no
// signal, so the water that the unit asks for need not wait for it.
enum class Part { Outputs, Potentials, Tracing };
inline constexpr std::size_t kParts = 3;

// A form as the list of types knows it.
struct Form {
    Part part;
    Sets sets;
    Bound (*bind)(Binder&);  // check then whether a look-up has failed
};

// Keeps a form for as long as the binder's notes.
template <typename F>
Bound bindForm(Binder& binder) {
    static_assert(std::is_trivially_destructible_v<F>);
    const auto run = [](const void* kept, const Block& block, const Ports& ports) {
        // A copy of its own: no store through the ports can change it, so its members stay in registers.
        const F local = *static_cast<const F*>(kept);
        local.run(block, ports);
    };
    return {run, new (binder.array<F>(1)) F(binder)};
}

template <typename F>
inline constexpr Form kPotentials{Part::Potentials, Sets::Nothing, bindForm<F>};

template <typename F, Sets sets>
inline constexpr Form kOutputs{Part::Outputs, sets, bindForm<F>};

template <typename F>
inline constexpr Form kTracing{Part::Tracing, Sets::Nothing, bindForm<F>};

#endif
