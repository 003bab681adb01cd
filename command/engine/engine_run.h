// One run of the engine, in a process of its own: its statics must be fresh, and a violated invariant ends the process.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace kesto {

class InterruptGuard;
class Record;
struct EngineOutputs;
struct Component;
struct Model;

enum class Outcome { finished, failed, crashed, interrupted };

std::string_view toText(Outcome outcome);

struct EngineRun {
    Outcome outcome = Outcome::crashed;
    std::string message;       // the engine's own text, or what the process left on stderr
    int step = -1;             // that it was at; -1: still in its set-up
    std::size_t stepsRun = 0;  // complete steps, whose results are kept
};

// Steps done of all; called now and then while the engine runs.
using Progress = std::function<void(std::size_t done, std::size_t all)>;

// Leaves the outputs in the record's shared memory. Stops early when `guard`, if there is one, has noted a request to
// stop.
EngineRun runEngine(Record& record, const Progress& progress = {}, const InterruptGuard* guard = nullptr);

// What is made of a run: files, and a text for whoever has asked for it.
using Conclusion = std::function<std::string(const EngineRun& run, const EngineOutputs& outputs)>;

// Runs the engine, and concludes in its own process, where the outputs stand: they are held once, and copied only when
// that process ends early, so that this one concludes. Throws std::runtime_error when it dies while it concludes.
std::string concludeRun(Record& record, const Conclusion& conclude, const Progress& progress,
                        const InterruptGuard* guard);

// Runs the engine in this process, which can do it once, and ends where the engine does not return. The outputs are the
// record's own.
EngineRun runEngineHere(Record& record);

// The engine's message with names for its ids: 'Series of type Rainfall of component with id=1 not found!' gains
// ' (group "house", house.toml:12)'.
std::string explainMessage(const std::string& message, const Model& model);

// The component that a message of the engine names by its id; null when it names none.
const Component* componentIn(const std::string& message, const Model& model);

}  // namespace kesto
