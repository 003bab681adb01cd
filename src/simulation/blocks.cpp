#include "simulation/blocks.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "calendar.h"
#include "components/lookup.h"
#include "components/type_codes.h"
#include "simulation/junctions.h"
#include "simulation/overlap.h"

// Tests compile this file with other lengths of a block, and with -1 for none at all: then every step goes by the list
// of components. 0: as many steps as suit the network.
#ifndef KESTO_BLOCK_LENGTH
#define KESTO_BLOCK_LENGTH 0
#endif

namespace {

// A block should be long, so that what it costs to come to a component's memory does not count, but the arrays of a
// block not take more memory than this, as long as it is not too short.
constexpr std::size_t kArrayBytes = 64 * 1024 * 1024;
constexpr std::size_t kShortest = 64;
constexpr std::size_t kLongest = 512;

std::size_t taskOf(std::size_t position, bool books) {
    return 2 * position + (books ? 1 : 0);
}

// Junction or mixer with all its inputs.
template <Signal (*result)(Signal)>
struct Sum {
    std::size_t count;
    const Signal* const* inputs;  // by step of the whole block

    void run(const Block& block, const Ports& ports) const {
        std::fill_n(ports.out1, block.length, Signal{});
        for (std::size_t i = 0; i < count; ++i) {
            const Signal* const input = block.part(inputs[i]);
            for (std::int32_t j = 0; j < block.length; ++j)
                addInput(ports.out1[j], input[j]);
        }
        for (std::int32_t j = 0; j < block.length; ++j)
            ports.out1[j] = result(ports.out1[j]);
    }
};

// Who reads a state needs all who write it. Two rows with one id write the same twice: only a type without inputs can
// have them, and both run the same form.
void addAccesses(std::vector<Notes::Access> accesses, std::vector<Need>& needs) {
    std::stable_sort(accesses.begin(), accesses.end(), [](const Notes::Access& a, const Notes::Access& b) {
        return std::pair(a.memory, !a.writes) < std::pair(b.memory, !b.writes);
    });
    for (auto first = accesses.begin(); first != accesses.end();) {
        const auto isOther = [&](const Notes::Access& access) { return access.memory != first->memory; };
        const auto end = std::find_if(first, accesses.end(), isOther);
        const auto readers = std::find_if(first, end, [](const Notes::Access& access) { return !access.writes; });
        for (auto writer = first; writer != readers; ++writer) {
            for (auto reader = readers; reader != end; ++reader) {
                if (reader->task != writer->task) needs.emplace_back(reader->task, writer->task);
            }
        }
        first = end;
    }
}

}  // namespace

Blocks::Blocks(Step& step, const std::vector<std::int32_t>& CompntId, CRossSignal& signals,
               const CRossConnection& connections, const std::vector<Slots>& left, std::int32_t end)
    : Globals_(step.Globals),
      step_(step),
      signals_(signals),
      connections_(connections),
      end_(end),
      wiring_(*step.lookups, CompntId, connections) {
    bind(CompntId);
    order();
    layOut(left);
    connect();
    addTransfers();
}

void Blocks::bind(const std::vector<std::int32_t>& CompntId) {
    const std::vector<Wiring::Component>& components = wiring_.components();
    tasks_.resize(2 * components.size());
    for (std::size_t i = 0; i < components.size(); ++i) {
        if (!components[i].type) continue;  // sums are bound to their inputs
        step_.id = CompntId[i];
        step_.row = components[i].row;
        notes_.handedOver.reset();
        for (const Form* const form : components[i].type->forms) {
            if (!form) continue;
            notes_.task = taskOf(i, form->books);
            Binder binder(step_, &notes_);
            std::array<Bound, 2>& forms = tasks_[notes_.task].forms;
            forms[forms[0].run ? 1 : 0] = form->bind(binder);
        }
    }
}

// Gives each sequence that is read its array.
void Blocks::layOut(const std::vector<Slots>& left) {
    places_ = sharePlaces(lifetimes());
    const std::size_t bytes =
        places_.count * sizeof(Signal) + static_cast<std::size_t>(notes_.blockArrays) * sizeof(float);
    const auto longest = static_cast<std::int32_t>(std::clamp(kArrayBytes / bytes, kShortest, kLongest));
    blockLength_ = notes_.canStop ? 1 : KESTO_BLOCK_LENGTH > 0 ? KESTO_BLOCK_LENGTH : longest;
    blockLength_ = std::min(blockLength_, end_ - Globals_->CurStep);
    const auto length = static_cast<std::size_t>(blockLength_);
    arrayLength_ = length + 1;
    arrays_.resize(places_.count * arrayLength_);
    unread_.resize(2 * length);
    blockArrays_.resize(static_cast<std::size_t>(notes_.blockArrays) * length);
    const Slots initial{step_.in1, step_.in2, step_.out1, step_.out2};
    for (const std::size_t sequence : wiring_.read()) {
        Signal* const first = array(sequence) - 1;
        if (sequence < wiring_.ofNobody()) {
            *first = left[sequence / kSlots][sequence % kSlots];
        } else if (sequence < wiring_.ofNothing()) {
            std::fill_n(first, arrayLength_, initial[sequence % kSlots]);
        }
    }
}

// When in the order of tasks each sequence is in use.
std::vector<Lifetime> Blocks::lifetimes() const {
    std::vector<Lifetime> lifetimes(wiring_.ofNothing() + 1);
    std::vector<Lifetime> ofTask(tasks_.size());
    for (const auto& [begin, end, stepByStep] : schedule_.groups) {
        for (std::size_t i = begin; i < end; ++i)
            ofTask[schedule_.order[i]] = stepByStep ? Lifetime{begin, end - 1} : Lifetime{i, i};
    }
    const auto useFor = [&](std::size_t sequence, const Lifetime& time) {
        lifetimes[sequence].first = std::min(lifetimes[sequence].first, time.first);
        lifetimes[sequence].last = std::max(lifetimes[sequence].last, time.last);
    };
    const auto use = [&](std::size_t sequence, std::size_t position) {
        useFor(sequence, ofTask[taskOf(position, false)]);
        useFor(sequence, ofTask[taskOf(position, true)]);
    };
    const Lifetime always{0, schedule_.order.size()};
    const auto read = [&](const Reading& reading, std::size_t position) {
        const bool lasts = reading.stepBack || reading.sequence >= wiring_.ofNobody();
        lasts ? useFor(reading.sequence, always) : use(reading.sequence, position);
    };
    const std::vector<Wiring::Component>& components = wiring_.components();
    for (std::size_t i = 0; i < components.size(); ++i) {
        for (const Reading& reading : components[i].inputs)
            read(reading, i);
        for (const Slot slot : {kIn1, kIn2}) {
            if (components[i].isFilled[slot]) read(components[i].input[slot], i);
        }
    }
    for (const Wiring::Leftover& leftover : wiring_.leftovers())
        read(leftover.left, leftover.sequence / kSlots);
    for (const std::size_t sequence : wiring_.read()) {
        if (sequence < wiring_.ofNobody()) use(sequence, sequence / kSlots);
    }
    for (const Slot slot : {kIn1, kIn2, kOut1, kOut2})
        useFor(wiring_.last(slot).sequence, always);
    return lifetimes;
}

Signal* Blocks::array(std::size_t sequence) {
    return &arrays_[places_.of[sequence] * arrayLength_ + 1];
}

const Signal* Blocks::array(const Reading& reading) {
    Signal* const first = array(reading.sequence);
    if (!reading.stepBack) return first;
    readBack_.push_back(first - 1);
    return first - 1;
}

void Blocks::connect() {
    const std::vector<Wiring::Component>& components = wiring_.components();
    const std::vector<std::size_t>& read = wiring_.read();
    ports_.resize(components.size());
    for (std::size_t i = 0; i < components.size(); ++i) {
        const Wiring::Component& component = components[i];
        const auto own = [&](Slot slot, Signal* instead) {
            const std::size_t sequence = i * kSlots + slot;
            return std::binary_search(read.begin(), read.end(), sequence) ? array(sequence) : instead;
        };
        const auto input = [&](Slot slot) {
            return component.isFilled[slot] ? array(component.input[slot]) : own(slot, unread_.data());
        };
        ports_[i] = {input(kIn1), input(kIn2), own(kOut1, unread_.data()), own(kOut2, unread_.data() + blockLength_)};
        if (!component.type) bindSum(i);
    }
}

void Blocks::bindSum(std::size_t position) {
    const Wiring::Component& component = wiring_.components()[position];
    std::vector<const Signal*> inputs;
    for (const Reading& reading : component.inputs)
        inputs.push_back(array(reading));
    Binder binder(step_, &notes_);
    const Signal* const* const kept = binder.keep(inputs);
    Bound& form = tasks_[taskOf(position, false)].forms[0];
    form = nint(component.row->techid) == code::kJunction ? keepForm(binder, Sum<junction>{inputs.size(), kept})
                                                          : keepForm(binder, Sum<mixer>{inputs.size(), kept});
}

// The half of a component that runs first.
std::size_t Blocks::firstTask(std::size_t position) const {
    const ComponentType* const type = wiring_.components()[position].type;
    return taskOf(position, notes_.canStop && type && type->forms[0]->books);
}

void Blocks::addTransfers() {
    for (const Wiring::Leftover& leftover : wiring_.leftovers()) {
        const std::size_t slot = leftover.sequence % kSlots;
        const bool isInput = slot == kIn1 || slot == kIn2;
        const std::size_t position = leftover.sequence / kSlots;
        transfers_.push_back({isInput ? firstTask(position) : taskOf(position, false), isInput,
                              leftover.hasQuantity ? Part::Quality : Part::QualityOfNone, array(leftover.sequence),
                              array(leftover.left)});
    }
    // An input that somebody needs later has an array of its own beside the sender's.
    for (const std::size_t sequence : wiring_.read()) {
        const std::size_t slot = sequence % kSlots;
        const std::size_t position = sequence / kSlots;
        if (sequence >= wiring_.ofNobody() || slot > kIn2 || !wiring_.components()[position].isFilled[slot]) continue;
        const Signal* const source = slot == kIn1 ? ports_[position].in1 : ports_[position].in2;
        transfers_.push_back({taskOf(position, false), true, Part::Whole, array(sequence), source});
    }
    std::sort(readBack_.begin(), readBack_.end());
    readBack_.erase(std::unique(readBack_.begin(), readBack_.end()), readBack_.end());
    std::sort(transfers_.begin(), transfers_.end(),
              [](const Transfer& a, const Transfer& b) { return a.task < b.task; });
    transferStart_.assign(tasks_.size() + 1, 0);
    for (const Transfer& transfer : transfers_)
        ++transferStart_[transfer.task + 1];
    for (std::size_t task = 0; task < tasks_.size(); ++task)
        transferStart_[task + 1] += transferStart_[task];
}

std::vector<Need> Blocks::needs() const {
    std::vector<Need> needs;
    const auto addReading = [&](std::size_t task, const Reading& reading) {
        if (reading.sequence < wiring_.ofNobody()) needs.emplace_back(task, taskOf(reading.sequence / kSlots, false));
    };
    const std::vector<Wiring::Component>& components = wiring_.components();
    for (std::size_t i = 0; i < components.size(); ++i) {
        const Wiring::Component& component = components[i];
        const std::size_t outputs = taskOf(i, false);
        for (const Reading& reading : component.inputs)
            addReading(outputs, reading);
        for (const Slot slot : {kIn1, kIn2}) {
            if (component.isFilled[slot]) addReading(outputs, component.input[slot]);
        }
        needs.emplace_back(taskOf(i, true), outputs);
    }
    for (const Wiring::Leftover& leftover : wiring_.leftovers())
        addReading(taskOf(leftover.sequence / kSlots, false), leftover.left);
    addAccesses(notes_.accesses, needs);
    return needs;
}

void Blocks::order() {
    const std::vector<Wiring::Component>& components = wiring_.components();
    if (notes_.canStop) {
        // Blocks of one step, which go as far as the component that stops the run.
        for (std::size_t i = 0; i < components.size(); ++i) {
            const std::size_t first = firstTask(i);
            schedule_.order.insert(schedule_.order.end(), {first, first ^ 1U});
        }
        schedule_.groups.push_back({0, schedule_.order.size(), false});
        return;
    }
    // Components of one key together, since they mostly work on the same series. Nobody needs what is booked, so that
    // all who book under a key do so in the order in which they stand here: that of calculation.
    std::unordered_map<std::int32_t, std::size_t> firstOfKey;
    std::vector<std::pair<std::size_t, std::size_t>> positions;
    for (std::size_t i = 0; i < components.size(); ++i)
        positions.emplace_back(firstOfKey.try_emplace(nint(components[i].row->key), i).first->second, i);
    std::sort(positions.begin(), positions.end());
    std::vector<std::size_t> wanted;
    for (const auto& [first, position] : positions) {
        wanted.push_back(taskOf(position, false));
        if (tasks_[taskOf(position, true)].forms[0].run) wanted.push_back(taskOf(position, true));
    }
    schedule_ = makeSchedule(tasks_.size(), needs(), wanted);
}

std::int32_t Blocks::run() {
    if (KESTO_BLOCK_LENGTH < 0) return KESTO_SUCCESS;
    // With radiation units a step that stops midway has left a part of their ranges behind.
    if (notes_.canStop && !notes_.radiationUnits.empty()) return KESTO_SUCCESS;
    if (writesOverlap(*Globals_, notes_.accesses)) return KESTO_SUCCESS;
    const std::int32_t first = Globals_->CurStep;
    const std::int32_t stop = lookAhead();
    while (Globals_->CurStep < stop) {
        const std::int32_t begin = Globals_->CurStep;
        const std::int32_t length = std::min(blockLength_, stop - begin);
        const Date* const dates = notes_.needsDates ? &dates_[static_cast<std::size_t>(begin - first)] : nullptr;
        const Block block{begin, length, dates, blockArrays_.data(), blockLength_};
        const bool isLast = begin + length == stop;
        radiate(block);
        if (!runBlock(block, isLast)) return KESTO_RUN_FAILURE;
        for (Signal* const before : readBack_)
            *before = before[length];
        if (isLast) leave(length - 1);
        Globals_->CurStep = begin + length;
    }
    return KESTO_SUCCESS;
}

// The steps before this one run without a stop for temperatures, and have dates.
std::int32_t Blocks::lookAhead() {
    std::vector<std::pair<const float*, const float*>> pairs;
    for (const auto& [tMin, tMax] : notes_.temperatures)
        pairs.emplace_back(tMin, tMax);
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    std::int32_t end = end_;
    for (const auto& [tMin, tMax] : pairs) {
        std::int32_t k = Globals_->CurStep;
        while (k < end && !(tMin[k] > tMax[k]))
            ++k;
        end = k;
    }
    for (std::int32_t k = Globals_->CurStep; notes_.needsDates && k < end; ++k) {
        const auto date = calendarOf(*Globals_, k);
        if (!date) return k;
        dates_.push_back({date->tm_mday, date->tm_yday});
    }
    return end;
}

// Short-wave radiation of all units, step by step, since they share the ranges of temperature.
void Blocks::radiate(const Block& block) const {
    for (std::int32_t j = 0; j < block.length; ++j) {
        for (const auto& [Rpot, temperatures, shortWave] : notes_.radiationUnits) {
            const std::int32_t k = block.begin + j;
            const float Ra = insolationofthisstep(*Rpot, block.dates[j].dayOfYear);
            block.part(shortWave)[j] = directbeamsolar(Ra, temperatures.tMin[k], temperatures.tMax[k]);
        }
    }
}

bool Blocks::runBlock(const Block& block, bool isLast) {
    for (const auto& [begin, end, stepByStep] : schedule_.groups) {
        const std::int32_t rounds = stepByStep ? block.length : 1;
        for (std::int32_t round = 0; round < rounds; ++round) {
            const Block part = stepByStep ? block.step(round) : block;
            for (std::size_t i = begin; i < end; ++i) {
                runTask(schedule_.order[i], part, isLast);
                if (Globals_->ErrFlag == 1) return false;
            }
        }
    }
    return true;
}

void Blocks::runTask(std::size_t task, const Block& block, bool isLast) {
    const bool hasTransfers = transferStart_[task] != transferStart_[task + 1];
    if (hasTransfers) transfer(task, true, block);
    const std::size_t position = task / 2;
    const auto& [in1, in2, out1, out2] = ports_[position];
    const Ports ports{block.part(in1), block.part(in2), block.part(out1), block.part(out2)};
    for (const Bound& bound : tasks_[task].forms) {
        if (bound.run) bound.run(bound.form, block, ports);
    }
    if (hasTransfers) transfer(task, false, block);
    if (!isLast || task != taskOf(position, false)) return;
    const std::int32_t j = block.length - 1;
    PutInCrossSignal(signals_, connections_, position, ports.out1[j], ports.out2[j]);
}

void Blocks::transfer(std::size_t task, bool isBefore, const Block& block) const {
    for (std::size_t i = transferStart_[task]; i < transferStart_[task + 1]; ++i) {
        const Transfer& transfer = transfers_[i];
        if (transfer.isBefore != isBefore) continue;
        Signal* const target = block.part(transfer.target);
        const Signal* const source = block.part(transfer.source);
        for (std::int32_t j = 0; j < block.length; ++j) {
            target[j].quality = source[j].quality;
            if (transfer.part == Part::QualityOfNone) target[j].quantity = -1.0F;
            if (transfer.part == Part::Whole) target[j].quantity = source[j].quantity;
        }
    }
}

// Leaves the driver's buffers as they are after a step of the last block.
void Blocks::leave(std::int32_t j) {
    step_.in1.quality = array(wiring_.last(kIn1))[j].quality;
    step_.in2.quality = array(wiring_.last(kIn2))[j].quality;
    step_.out1.quality = array(wiring_.last(kOut1))[j].quality;
    step_.out2.quality = array(wiring_.last(kOut2))[j].quality;
}
