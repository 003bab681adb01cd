#include "engine_run.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <regex>

namespace kesto {

namespace {

Record* childRecord = nullptr;  // for the signal handlers, which get no argument

// Moves the engine's outputs, so far as they go, to where the parent can read them.
void copyOutputs() {
    const AUEglobals& g = childRecord->globals();
    const SharedOutputs& out = childRecord->outputs();
    const std::size_t steps = childRecord->steps();
    const auto done = std::min(steps, static_cast<std::size_t>(std::max(g.CurStep, -1) + 1));
    for (std::size_t i = 0; g.Logs && i < childRecord->logs().size(); ++i) {
        if (g.Logs[i].Signal) std::memcpy(out.logs + i * steps, g.Logs[i].Signal, done * sizeof(Signal));
    }
    for (std::size_t i = 0; g.WatBod && i < childRecord->waterBodies().size(); ++i) {
        if (g.WatBod[i].Signal) std::memcpy(out.waterBodies + i * steps, g.WatBod[i].Signal, done * sizeof(Signal));
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

extern "C" void keepResultsAndDie(int signal) {
    // Whoever presses the keys again must not cut the copy short; a fault within it ends the process at once.
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGTERM, SIG_IGN);
    copyOutputs();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

[[noreturn]] void runChild(Record& record, int errorPipe) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(errorPipe, STDERR_FILENO);
    setenv("TZ", "UTC", 1);
    tzset();
    childRecord = &record;
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGINT, SIGTERM}) {
        std::signal(signal, keepResultsAndDie);
    }
    AUEglobals& globals = record.globals();
    *record.outputs().status = KESTO_simul(&globals, 1, globals.nSteps);
    copyOutputs();
    *record.outputs().finished = 1;
    _exit(0);
}

// The pipe, closed whatever happens.
struct Pipe {
    int ends[2] = {-1, -1};
    Pipe() {
        if (pipe(ends) != 0) throw std::runtime_error(fmt::format("cannot open a pipe: {}", std::strerror(errno)));
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    void closeEnd(int i) {
        if (ends[i] >= 0) close(ends[i]);
        ends[i] = -1;
    }
};

volatile std::sig_atomic_t interrupted = 0;
extern "C" void noteInterrupt(int) {
    interrupted = 1;
}

// While the child runs an interrupt only makes a note; the child gets it too and keeps what it has.
class InterruptGuard {
  public:
    InterruptGuard() {
        interrupted = 0;
        struct sigaction action {};
        action.sa_handler = noteInterrupt;
        sigaction(SIGINT, &action, &before_[0]);
        sigaction(SIGTERM, &action, &before_[1]);
    }
    ~InterruptGuard() {
        sigaction(SIGINT, &before_[0], nullptr);
        sigaction(SIGTERM, &before_[1], nullptr);
    }

  private:
    struct sigaction before_[2];
};

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

// Reads what the child says on stderr until it ends.
std::string watch(const Record& record, pid_t child, int errorPipe, const Progress& progress) {
    std::string errors;
    bool passedOn = false;
    for (;;) {
        pollfd waiting{errorPipe, POLLIN, 0};
        const int ready = poll(&waiting, 1, 100);
        if (interrupted && !passedOn) {
            kill(child, SIGTERM);
            passedOn = true;
        }
        if (ready > 0) {
            char buffer[512];
            const ssize_t length = read(errorPipe, buffer, sizeof buffer);
            if (length == 0) return errors;
            if (length > 0) errors.append(buffer, static_cast<std::size_t>(length));
            if (length < 0 && errno != EINTR) return errors;
        }
        if (progress) progress(stepsDone(record), record.steps());
    }
}

EngineRun conclude(const Record& record, int waitStatus, std::string errors) {
    const AUEglobals& globals = record.globals();
    EngineRun run;
    run.step = globals.CurStep;
    // A process that was killed from outside, as when memory runs out, has left nothing.
    if (*record.outputs().kept) run.stepsRun = std::min(stepsDone(record), record.steps());
    while (!errors.empty() && errors.back() == '\n') {
        errors.pop_back();
    }
    if (*record.outputs().finished) {
        run.outcome = *record.outputs().status == KESTO_SUCCESS ? Outcome::finished : Outcome::failed;
        run.message = std::string(globals.ErrMsg, strnlen(globals.ErrMsg, sizeof globals.ErrMsg));
    } else if (interrupted) {
        run.outcome = Outcome::interrupted;
    } else {
        run.outcome = Outcome::crashed;
        run.message = errors;
        if (errors.empty() && WIFSIGNALED(waitStatus)) {
            run.message = fmt::format("ended by signal {} ({})", WTERMSIG(waitStatus), strsignal(WTERMSIG(waitStatus)));
        }
    }
    return run;
}

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

EngineRun runEngine(Record& record, const Progress& progress) {
    prepare(record);
    Pipe errors;
    const InterruptGuard guard;
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error(fmt::format("cannot start a process: {}", std::strerror(errno)));
    if (child == 0) runChild(record, errors.ends[1]);
    errors.closeEnd(1);
    const std::string text = watch(record, child, errors.ends[0], progress);
    int waitStatus = 0;
    while (waitpid(child, &waitStatus, 0) < 0 && errno == EINTR) {
    }
    return conclude(record, waitStatus, text);
}

std::string explainMessage(const std::string& message, const Model& model) {
    static const std::regex idPattern(R"((?:id=|Compnt\. |brand )(-?\d+))");
    std::smatch match;
    if (!std::regex_search(message, match, idPattern)) return message;
    const int id = std::atoi(match[1].str().c_str());
    if (match[0].str().starts_with("brand")) {
        for (const Brand& brand : model.brands) {
            if (brand.id == id) return fmt::format("{} (brand \"{}\", {})", message, brand.name, toString(brand.place));
        }
        return message;
    }
    for (const Component& component : model.components) {
        if (component.id != id) continue;
        return fmt::format("{} (component \"{}\", {}, {})", message, component.name, component.type->name,
                           toString(component.place));
    }
    for (const Group& group : model.groups) {
        if (group.id == id) return fmt::format("{} (group \"{}\", {})", message, group.name, toString(group.place));
    }
    return message;
}

}  // namespace kesto
