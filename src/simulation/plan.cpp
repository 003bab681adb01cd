#include "simulation/plan.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace {

// A long block spreads the cost of reaching a component's memory over many steps. Its arrays should not take more
// memory than this, unless the block would become too short.
constexpr std::size_t kArrayBytes = 64 * 1024 * 1024;
constexpr std::size_t kShortest = 64;
constexpr std::size_t kLongest = 512;

constexpr std::array kAllParts{Part::Outputs, Part::Potentials, Part::Tracing};

std::size_t outputsOf(std::size_t position) {
    return taskOf(position, Part::Outputs);
}

// Junctions and mixers have outputs without a form.
bool hasTask(const BoundNetwork& network, std::size_t position, Part part) {
    return part == Part::Outputs || network.tasks[taskOf(position, part)].run;
}

// The part of a component that runs first. The others need nothing but what its outputs leave and what has been there
// before the step, unless they are to come in their turn.
Part firstPart(const BoundNetwork& network, std::size_t position, bool byTurns) {
    const ComponentType* const type = network.components[position].type;
    return byTurns && type ? type->forms[0]->part : Part::Outputs;
}

Schedule inTurns(const BoundNetwork& network) {
    Schedule schedule;
    for (std::size_t i = 0; i < network.components.size(); ++i) {
        const Part first = firstPart(network, i, true);
        schedule.order.push_back(taskOf(i, first));
        for (const Part part : kAllParts) {
            if (part != first && hasTask(network, i, part)) schedule.order.push_back(taskOf(i, part));
        }
    }
    schedule.groups.push_back({0, schedule.order.size(), false});
    return schedule;
}

// A task that reads a state needs all tasks that write it. Two rows with one id write the same values twice: only types
// without inputs can have such rows, and both run the same form.
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

std::vector<Need> findNeeds(const BoundNetwork& network, const Wiring& wiring) {
    std::vector<Need> needs;
    const auto add = [&](std::size_t task, const Reading& reading) {
        if (reading.sequence < wiring.ofNobody()) needs.emplace_back(task, outputsOf(reading.sequence / kSlots));
    };
    for (std::size_t i = 0; i < wiring.size(); ++i) {
        for (const Reading& reading : wiring.sumInputs(i))
            add(outputsOf(i), reading);
        for (const Slot slot : {kIn1, kIn2}) {
            if (const Reading* const reading = wiring.input(i, slot)) add(outputsOf(i), *reading);
        }
        for (const Part part : {Part::Potentials, Part::Tracing}) {
            if (hasTask(network, i, part)) needs.emplace_back(taskOf(i, part), outputsOf(i));
        }
    }
    for (const Wiring::Leftover& leftover : wiring.leftovers())
        add(outputsOf(leftover.sequence / kSlots), leftover.left);
    addAccesses(network.notes.accesses, needs);
    return needs;
}

// All positions, grouped by key, since components of one key mostly use the same series.
std::vector<std::size_t> byKey(const BoundNetwork& network) {
    const std::size_t count = network.components.size();
    std::vector<std::size_t> next(count, count);  // of the same key
    std::vector<bool> isFirst(count, false);
    std::unordered_map<std::int32_t, std::size_t> lastOfKey;
    for (std::size_t i = 0; i < count; ++i) {
        const auto [last, isNew] = lastOfKey.try_emplace(nint(network.components[i].row->key), i);
        isFirst[i] = isNew;
        if (!isNew) next[std::exchange(last->second, i)] = i;
    }
    std::vector<std::size_t> positions;
    positions.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t k = isFirst[i] ? i : count; k != count; k = next[k])
            positions.push_back(k);
    }
    return positions;
}

// No task needs what is booked. So components that book under one key do so in the order of `wanted`: the order of
// calculation.
Schedule asNeeded(const BoundNetwork& network, const Wiring& wiring) {
    std::vector<std::size_t> wanted;
    for (const std::size_t position : byKey(network)) {
        for (const Part part : kAllParts) {
            if (hasTask(network, position, part)) wanted.push_back(taskOf(position, part));
        }
    }
    return makeSchedule(network.tasks.size(), findNeeds(network, wiring), wanted);
}

// When in the order of tasks each component runs.
std::vector<Lifetime> findTimes(const Schedule& schedule, std::size_t components) {
    std::vector<Lifetime> times(components);
    for (const auto& [begin, end, stepByStep] : schedule.groups) {
        for (std::size_t i = begin; i < end; ++i) {
            Lifetime& time = times[positionOf(schedule.order[i])];
            time.first = std::min(time.first, stepByStep ? begin : i);
            time.last = std::max(time.last, stepByStep ? end - 1 : i);
        }
    }
    return times;
}

// When in the order of tasks each sequence is in use.
std::vector<Lifetime> findLifetimes(const Wiring& wiring, const Schedule& schedule) {
    const std::vector<Lifetime> times = findTimes(schedule, wiring.size());
    std::vector<Lifetime> lifetimes(wiring.sequences());
    const auto use = [&](std::size_t sequence, const Lifetime& time) {
        lifetimes[sequence].first = std::min(lifetimes[sequence].first, time.first);
        lifetimes[sequence].last = std::max(lifetimes[sequence].last, time.last);
    };
    const Lifetime always{0, schedule.order.size()};
    const auto read = [&](const Reading& reading, std::size_t position) {
        const bool lasts = reading.stepBack || reading.sequence >= wiring.ofNobody();
        use(reading.sequence, lasts ? always : times[position]);
    };
    for (std::size_t i = 0; i < wiring.size(); ++i) {
        for (const Reading& reading : wiring.sumInputs(i))
            read(reading, i);
        for (const Slot slot : {kIn1, kIn2}) {
            if (const Reading* const reading = wiring.input(i, slot)) read(*reading, i);
        }
        for (std::size_t sequence = i * kSlots; sequence < (i + 1) * kSlots; ++sequence) {
            if (wiring.isRead(sequence)) use(sequence, times[i]);
        }
    }
    for (const Wiring::Leftover& leftover : wiring.leftovers())
        read(leftover.left, leftover.sequence / kSlots);
    for (const Slot slot : {kIn1, kIn2, kOut1, kOut2})
        use(wiring.last(slot).sequence, always);
    return lifetimes;
}

std::int32_t chooseLength(const PlanOptions& options, std::size_t signals, std::size_t floats) {
    const std::size_t bytes = signals * sizeof(Signal) + floats * sizeof(float);
    const auto fitting = static_cast<std::int32_t>(std::clamp(kArrayBytes / bytes, kShortest, kLongest));
    const std::int32_t length = options.blockLength == kFittingBlocks ? fitting : options.blockLength;
    return options.byTurns ? 1 : std::min(length, options.steps);
}

std::vector<Transfer> findTransfers(const BoundNetwork& network, const Plan& plan) {
    const Wiring& wiring = plan.wiring;
    std::vector<Transfer> transfers;
    for (const Wiring::Leftover& leftover : wiring.leftovers()) {
        const std::size_t slot = leftover.sequence % kSlots;
        const std::size_t position = leftover.sequence / kSlots;
        const bool isInput = slot == kIn1 || slot == kIn2;
        transfers.push_back(
            {isInput ? taskOf(position, firstPart(network, position, plan.byTurns)) : outputsOf(position), isInput,
             leftover.hasQuantity ? Transfer::Part::Quality : Transfer::Part::QualityOfNone,
             plan.layout.place(leftover.sequence), plan.layout.place(leftover.left)});
    }
    // An input that is needed later has an array of its own besides the sender's.
    for (std::size_t i = 0; i < wiring.size(); ++i) {
        for (const Slot slot : {kIn1, kIn2}) {
            const Reading* const input = wiring.input(i, slot);
            const std::size_t own = i * kSlots + slot;
            if (!input || !wiring.isRead(own)) continue;
            transfers.push_back(
                {outputsOf(i), true, Transfer::Part::Whole, plan.layout.place(own), plan.layout.place(*input)});
        }
    }
    std::stable_sort(transfers.begin(), transfers.end(),
                     [](const Transfer& a, const Transfer& b) { return a.task < b.task; });
    return transfers;
}

}  // namespace

Plan::Plan(const BoundNetwork& network, const CRossConnection& connections, const PlanOptions& options)
    : byTurns(options.byTurns),
      wiring(network.components, connections),
      schedule(byTurns ? inTurns(network) : asNeeded(network, wiring)),
      layout{sharePlaces(findLifetimes(wiring, schedule))} {
    blockLength = chooseLength(options, layout.arrays.count, network.notes.arrays.size());
    layout.length = static_cast<std::size_t>(blockLength) + 1;
    transfers = findTransfers(network, *this);
    transferStart.assign(network.tasks.size() + 1, 0);
    for (const Transfer& transfer : transfers)
        ++transferStart[transfer.task + 1];
    for (std::size_t task = 0; task < network.tasks.size(); ++task)
        transferStart[task + 1] += transferStart[task];
}

std::size_t Plan::placeOf(std::size_t position, Slot slot) const {
    const Reading* const input = slot == kIn1 || slot == kIn2 ? wiring.input(position, slot) : nullptr;
    if (input) return layout.place(*input);
    const std::size_t own = position * kSlots + slot;
    return wiring.isRead(own) ? layout.place(own) : layout.unread(slot);
}
