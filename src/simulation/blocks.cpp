#include "simulation/blocks.h"

#include <algorithm>
#include <utility>

#include "calendar.h"
#include "components/type_codes.h"
#include "simulation/junctions.h"

namespace {

// The first step, from `begin` on, that stops the run for its temperatures; `end` without one.
std::int32_t findStop(const std::vector<Temperatures>& temperatures, std::int32_t begin, std::int32_t end) {
    std::vector<std::pair<const float*, const float*>> pairs;
    for (const auto& [tMin, tMax] : temperatures)
        pairs.emplace_back(tMin, tMax);
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    for (const auto& [tMin, tMax] : pairs) {
        std::int32_t k = begin;
        while (k < end && !(tMin[k] > tMax[k]))
            ++k;
        end = k;
    }
    return end;
}

// The dates of the steps, as far as the calendar goes.
std::vector<Date> findDates(const AUEglobals& record, std::int32_t begin, std::int32_t end) {
    std::vector<Date> dates;
    for (std::int32_t k = begin; k < end; ++k) {
        const auto date = calendarOf(record, k);
        if (!date) break;
        dates.push_back({date->tm_mday, date->tm_yday});
    }
    return dates;
}

// Short-wave radiation of all units, step by step, since they share the ranges of temperature.
void radiate(const std::vector<Notes::RadiationUnit>& units, const Block& block) {
    for (std::int32_t j = 0; j < block.length; ++j) {
        for (const Notes::RadiationUnit& unit : units)
            unit.radiate(block, j);
    }
}

// A junction or mixer. In place of a form it has a list of its inputs.
template <Signal (*result)(Signal)>
void addUp(const void* inputs, const Block& block, const Ports& ports) {
    std::fill_n(ports.out1, block.length, Signal{});
    for (const auto* input = static_cast<const Signal* const*>(inputs); *input; ++input) {
        const Signal* const signals = block.part(*input);
        for (std::int32_t j = 0; j < block.length; ++j)
            addInput(ports.out1[j], signals[j]);
    }
    for (std::int32_t j = 0; j < block.length; ++j)
        ports.out1[j] = result(ports.out1[j]);
}

}  // namespace

Blocks::Blocks(Run& run, Step& step, const BoundNetwork& network, const Plan& plan)
    : Globals_(step.Globals),
      run_(run),
      step_(step),
      network_(network),
      plan_(plan),
      signals_(plan.layout.elements()),
      blockArrays_(network.notes.arrays.size() * static_cast<std::size_t>(plan.blockLength)) {
    const Wiring& wiring = plan.wiring;
    for (const std::size_t sequence : wiring.readBack())
        signals_[plan.layout.place(sequence) - 1] = network.left[sequence / kSlots][sequence % kSlots];
    const Slots slots{step.in1, step.in2, step.out1, step.out2};
    for (const Slot slot : {kIn1, kIn2, kOut1, kOut2}) {
        if (!wiring.isRead(wiring.ofNobody() + slot)) continue;
        std::fill_n(&signals_[plan.layout.place(wiring.ofNobody() + slot) - 1], plan.layout.length, slots[slot]);
    }
    fillEntries();
}

void Blocks::fillEntries() {
    std::vector<std::size_t> listOf(plan_.wiring.size());
    for (std::size_t i = 0; i < plan_.wiring.size(); ++i) {
        if (network_.components[i].type) continue;
        listOf[i] = sumInputs_.size();
        for (const Reading& reading : plan_.wiring.sumInputs(i))
            sumInputs_.push_back(&signals_[plan_.layout.place(reading)]);
        sumInputs_.push_back(nullptr);
    }
    entries_.reserve(plan_.schedule.order.size());
    for (const std::size_t task : plan_.schedule.order) {
        const std::size_t position = positionOf(task);
        const auto signals = [&](Slot slot) { return &signals_[plan_.placeOf(position, slot)]; };
        entries_.push_back({network_.tasks[task],
                            {signals(kIn1), signals(kIn2), signals(kOut1), signals(kOut2)},
                            !plan_.transfersOf(task).empty()});
        const auto& [row, type] = network_.components[position];
        if (type) continue;
        const bool isJunction = nint(row->techid) == code::kJunction;
        entries_.back().bound = {isJunction ? addUp<junction> : addUp<mixer>, &sumInputs_[listOf[position]]};
    }
}

std::int32_t Blocks::run(std::int32_t end) {
    const Notes& notes = network_.notes;
    const std::int32_t first = Globals_->CurStep;
    std::int32_t stop = findStop(notes.temperatures, first, end);
    if (notes.needsDates) {
        dates_ = findDates(*Globals_, first, stop);
        stop = first + static_cast<std::int32_t>(dates_.size());
    }
    while (Globals_->CurStep < stop) {
        const std::int32_t begin = Globals_->CurStep;
        const std::int32_t length = std::min(plan_.blockLength, stop - begin);
        const Date* const dates = notes.needsDates ? &dates_[static_cast<std::size_t>(begin - first)] : nullptr;
        const bool isLast = begin + length == stop;
        if (!runBlock({begin, length, dates, blockArrays_.data(), plan_.blockLength}, isLast)) return KESTO_RUN_FAILURE;
        for (const std::size_t sequence : plan_.wiring.readBack()) {
            Signal* const before = &signals_[plan_.layout.place(sequence) - 1];
            *before = before[length];
        }
        if (isLast) storeSlots(length - 1);
        Globals_->CurStep = begin + length;
    }
    return KESTO_SUCCESS;
}

bool Blocks::runBlock(const Block& block, bool isLast) {
    const std::vector<Notes::RadiationUnit>& units = network_.notes.radiationUnits;
    // A step that stops midway keeps the ranges of temperature of the units that have had their turn.
    auto unit = plan_.byTurns ? units.begin() : units.end();
    if (!plan_.byTurns) radiate(units, block);
    for (const auto& [begin, end, stepByStep] : plan_.schedule.groups) {
        const std::int32_t rounds = stepByStep ? block.length : 1;
        for (std::int32_t round = 0; round < rounds; ++round) {
            const Block part = stepByStep ? block.step(round) : block;
            for (std::size_t i = begin; i < end; ++i) {
                for (; unit != units.end() && unit->task == plan_.schedule.order[i]; ++unit)
                    unit->radiate(block, 0);
                runEntry(i, part, isLast);
                if (Globals_->ErrFlag == 1) return false;
            }
        }
    }
    return true;
}

void Blocks::runEntry(std::size_t place, const Block& block, bool isLast) {
    const auto& [bound, whole, hasTransfers] = entries_[place];
    if (hasTransfers) transfer(place, true, block);
    const Ports ports{block.part(whole.in1), block.part(whole.in2), block.part(whole.out1), block.part(whole.out2)};
    if (bound.run) bound.run(bound.form, block, ports);
    if (hasTransfers) transfer(place, false, block);
    const std::size_t task = plan_.schedule.order[place];
    const std::size_t position = positionOf(task);
    if (!isLast || task != taskOf(position, Part::Outputs)) return;
    const std::int32_t j = block.length - 1;
    PutInCrossSignal(run_.signals, run_.connections, position, ports.out1[j], ports.out2[j]);
}

void Blocks::transfer(std::size_t place, bool isBefore, const Block& block) {
    Signal* const signals = block.part(signals_.data());
    for (const Transfer& transfer : plan_.transfersOf(plan_.schedule.order[place])) {
        if (transfer.isBefore != isBefore) continue;
        Signal* const target = signals + transfer.target;
        const Signal* const source = signals + transfer.source;
        for (std::int32_t j = 0; j < block.length; ++j) {
            target[j].quality = source[j].quality;
            if (transfer.part == Transfer::Part::QualityOfNone) target[j].quantity = -1.0F;
            if (transfer.part == Transfer::Part::Whole) target[j].quantity = source[j].quantity;
        }
    }
}

// The driver's buffers as they are after a step of the last block.
void Blocks::storeSlots(std::int32_t j) {
    const auto quality = [&](Slot slot) {
        return signals_[plan_.layout.place(plan_.wiring.last(slot)) + static_cast<std::size_t>(j)].quality;
    };
    step_.in1.quality = quality(kIn1);
    step_.in2.quality = quality(kIn2);
    step_.out1.quality = quality(kOut1);
    step_.out2.quality = quality(kOut2);
}
