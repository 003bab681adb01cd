#include "engine_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <utility>

#include "engine_process.h"
#include "platform.h"
#include "record.h"

namespace kesto {

namespace {

// Moves the engine's outputs, so far as they go, to where the parent can read them. What was moved is gone from the
// engine's tables, so that it takes memory once, and is not moved again when a signal stops the process meanwhile.
void moveSignals(Signal*& from, Signal* to, std::size_t steps, std::size_t done) {
    if (!from) return;
    std::memcpy(to, from, done * sizeof(Signal));
    giveBack(std::exchange(from, nullptr), steps * sizeof(Signal));
}

void copyOutputs(Record& record) {
    AUEglobals& g = record.globals();
    const SharedOutputs& out = record.outputs();
    const std::size_t steps = record.steps();
    const auto done = std::min(steps, static_cast<std::size_t>(std::max(g.CurStep, -1) + 1));
    for (std::size_t i = 0; g.Logs && i < record.logs().size(); ++i) {
        moveSignals(g.Logs[i].Signal, out.logs + i * steps, steps, done);
    }
    for (std::size_t i = 0; g.WatBod && i < record.waterBodies().size(); ++i) {
        moveSignals(g.WatBod[i].Signal, out.waterBodies + i * steps, steps, done);
    }
    const std::array<const SeriesEntry*, kPotentials> tables{g.NrgPot, g.InfPot, g.LosPot,
                                                             g.EvaPot, g.CapPot, g.OprPot};
    float* to = out.potentials;
    for (const SeriesEntry* table : tables) {
        for (std::int32_t i = 0; i < g.nPotComps; ++i, to += steps) {
            if (table && table[i].Value) std::memcpy(to, table[i].Value, done * sizeof(float));
        }
    }
    *out.kept = 1;
}

// In the child.
void callEngine(Record& record) {
    useUtc();
    AUEglobals& globals = record.globals();
    *record.outputs().status = KESTO_simul(&globals, 1, globals.nSteps);
    // From here on a request to stop comes too late: the copy is completed, and the run has finished.
    *record.outputs().finished = 1;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    copyOutputs(record);
}

std::size_t stepsDone(const Record& record) {
    const auto* current = static_cast<const volatile std::int32_t*>(&record.globals().CurStep);
    const std::int32_t step = *current;
    return static_cast<std::size_t>(std::max(step, 0));
}

// What the host must clear before a call.
void prepare(Record& record) {
    AUEglobals& globals = record.globals();
    globals.CurStep = -1;
    globals.ErrFlag = 0;
    globals.ErrMsg[0] = '\0';
    *record.outputs().finished = 0;
    *record.outputs().kept = 0;
}

// Until the child ends. An interrupt of this process is passed on: the child keeps what it has. It is passed on again
// and again, since a child that has just begun may miss it.
void watch(const Record& record, ChildProcess& child, const InterruptGuard* guard, const Progress& progress) {
    while (child.wait(100)) {
        if (guard && guard->wasInterrupted()) child.stop();
        if (progress) progress(stepsDone(record), record.steps());
    }
}

EngineRun conclude(const Record& record, const ChildProcess& child, bool wasInterrupted) {
    const AUEglobals& globals = record.globals();
    EngineRun run;
    run.step = globals.CurStep;
    // A process that was killed from outside, as when memory runs out, has left nothing.
    if (*record.outputs().kept) run.stepsRun = std::min(stepsDone(record), record.steps());
    if (*record.outputs().finished && *record.outputs().kept) {
        run.outcome = *record.outputs().status == KESTO_SUCCESS ? Outcome::finished : Outcome::failed;
        run.message = std::string(globals.ErrMsg, strnlen(globals.ErrMsg, sizeof globals.ErrMsg));
    } else if (wasInterrupted) {
        run.outcome = Outcome::interrupted;
    } else {
        run.outcome = Outcome::crashed;
        run.message = child.errors().substr(0, child.errors().find_last_not_of('\n') + 1);
        if (run.message.empty()) run.message = child.fault();
    }
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
    ChildProcess child({[&record] { callEngine(record); }, [&record] { copyOutputs(record); }});
    watch(record, child, guard, progress);
    return conclude(record, child, guard && guard->wasInterrupted());
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
