#include "engine_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <stdexcept>

#include "engine_process.h"
#include "platform.h"
#include "record.h"

namespace kesto {

namespace {

// That the engine is at; -1: still in its set-up.
int stepOf(const Record& record) {
    const auto* current = static_cast<const volatile std::int32_t*>(&record.globals().CurStep);
    const std::int32_t step = *current;
    return step < 0 ? step : step - static_cast<std::int32_t>(record.daysBefore());
}

std::size_t stepsDone(const Record& record) {
    return static_cast<std::size_t>(std::max(stepOf(record), 0));
}

// Leaves the engine's outputs, so far as they go, to the parent. Called by a handler of signals, too.
void keepOutputs(Record& record) {
    const auto done = static_cast<std::size_t>(std::max(stepOf(record), -1) + 1);
    record.moveToShared(std::min(record.steps(), done));
    *record.state().kept = 1;
}

// In the child. From the end of this on a request to stop comes too late.
void callEngine(Record& record) {
    useUtc();
    keepFreeMemory();
    AUEglobals& globals = record.globals();
    *record.state().status = KESTO_simul(&globals, static_cast<std::int32_t>(record.daysBefore()) + 1, globals.nSteps);
    *record.state().finished = 1;
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

// What the host must clear before a call.
void prepare(Record& record) {
    AUEglobals& globals = record.globals();
    globals.CurStep = -1;
    globals.ErrFlag = 0;
    globals.ErrMsg[0] = '\0';
    *record.state().finished = 0;
    *record.state().kept = 0;
}

// Until the child ends. An interrupt of this process is passed on: the child keeps what it has. It is passed on again
// and again, since a child that has just begun may miss it.
void watch(const Record& record, ChildProcess& child, const InterruptGuard* guard, const Progress& progress) {
    while (child.wait(100)) {
        if (guard && guard->wasInterrupted()) child.stop();
        if (progress) progress(stepsDone(record), record.steps());
    }
}

// Of an engine that has returned.
EngineRun returned(const Record& record) {
    const AUEglobals& globals = record.globals();
    return {*record.state().status == KESTO_SUCCESS ? Outcome::finished : Outcome::failed,
            std::string(globals.ErrMsg, strnlen(globals.ErrMsg, sizeof globals.ErrMsg)), stepOf(record),
            std::min(stepsDone(record), record.steps())};
}

// Of a child that has ended, and has left its outputs, if any, in shared memory. One that was killed from outside, as
// when memory runs out, has left nothing.
EngineRun ended(const Record& record, const ChildProcess& child, bool wasInterrupted) {
    if (*record.state().finished && *record.state().kept) return returned(record);
    EngineRun run;
    run.step = stepOf(record);
    if (*record.state().kept) run.stepsRun = std::min(stepsDone(record), record.steps());
    run.outcome = wasInterrupted ? Outcome::interrupted : Outcome::crashed;
    if (wasInterrupted) return run;
    run.message = child.lastWords();
    return run;
}

// What a message of the engine names by its number.
struct Named {
    int id = 0;  // 0: nothing
    bool isBrand = false;

    explicit Named(const std::string& message) {
        static const std::regex pattern(R"((?:id=|Compnt\. |brand )(-?\d+))");
        std::smatch match;
        if (!std::regex_search(message, match, pattern)) return;
        id = std::atoi(match[1].str().c_str());
        isBrand = match[0].str().starts_with("brand");
    }
};

}  // namespace

std::string_view toText(Outcome outcome) {
    switch (outcome) {
        case Outcome::finished:
            return "finished";
        case Outcome::failed:
            return "failed";
        case Outcome::crashed:
            return "crashed";
        case Outcome::interrupted:
            return "interrupted";
    }
    return "";
}

EngineRun runEngine(Record& record, const Progress& progress, const InterruptGuard* guard) {
    prepare(record);
    const auto run = [&]() -> std::string {
        callEngine(record);
        keepOutputs(record);
        return "";
    };
    ChildProcess child({run, [&] { keepOutputs(record); }});
    watch(record, child, guard, progress);
    return ended(record, child, guard && guard->wasInterrupted());
}

std::string concludeRun(Record& record, const Conclusion& conclude, const Progress& progress,
                        const InterruptGuard* guard) {
    prepare(record);
    const auto run = [&] {
        callEngine(record);
        keepNothingMore();
        return conclude(returned(record), record.own());
    };
    ChildProcess child({run, [&] { keepOutputs(record); }});
    watch(record, child, guard, progress);
    if (child.answer()) return *child.answer();
    if (*record.state().finished && !*record.state().kept) {
        throw std::runtime_error(fmt::format("the process that collects and writes the results {}",
                                             child.fault().empty() ? "ended before it was done" : child.fault()));
    }
    return conclude(ended(record, child, guard && guard->wasInterrupted()), record.shared());
}

EngineRun runEngineHere(Record& record) {
    prepare(record);
    callEngine(record);
    return returned(record);
}

std::string explainMessage(const std::string& message, const Model& model) {
    const Named named(message);
    if (named.id == 0) return message;
    const auto where = [&](std::string_view what, const std::string& name, const Place& place) {
        return fmt::format("{} ({} \"{}\", {})", message, what, name, toString(place));
    };
    if (named.isBrand) {
        for (const Brand& brand : model.brands) {
            if (brand.id == named.id) return where("brand", brand.name, brand.place);
        }
        return message;
    }
    if (const Component* component = componentIn(message, model)) {
        return fmt::format("{} (component \"{}\", {}, {})", message, component->name, component->type->name,
                           toString(component->place));
    }
    for (const Group& group : model.groups) {
        if (group.id == named.id) return where("group", group.name, group.place);
    }
    return message;
}

const Component* componentIn(const std::string& message, const Model& model) {
    const Named named(message);
    if (named.id == 0 || named.isBrand) return nullptr;
    for (const Component& component : model.components) {
        if (component.id == named.id) return &component;
    }
    return nullptr;
}

}  // namespace kesto
