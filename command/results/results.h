// What a run has left, under the names of the model.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "AUEglobals.h"
#include "engine_run.h"
#include "model.h"
#include "recordings.h"
#include "signal_totals.h"

namespace kesto {

class Diagnostics;
struct ReadOptions;
class Record;
struct EngineOutputs;

struct Flow {
    std::string name;  // "tank:overflow"; of loggers and water bodies their own
    std::string_view unit;
    int component;
    int port;  // 0: what a logger or a water body received
    Carries carries;
    const Signal* signals;
    SignalTotals totals = {};

    OutputPort output() const { return {component, port}; }
};

struct PotentialSeries {
    std::string group;
    Potential potential;
    std::string_view unit;
    const float* values;
    double total = 0;
};

struct State {
    std::string name;
    SeriesKind kind;
    std::string_view unit;
    const float* values;
};

// A file that the run has read, and what it held then.
struct InputFile {
    std::string path;
    std::string sha256;
};

struct Results {
    const Model* model;
    EngineRun run;
    std::size_t steps;                        // complete ones: what can be read of every series
    std::vector<Flow> flows;                  // in order of component and port
    std::vector<PotentialSeries> potentials;  // of groups, in the order of the potentials; only those something books
    std::vector<State> states;
    std::vector<std::unique_ptr<Signal[]>> derived;

    std::vector<InputFile> inputs;             // in the order of inputPaths()
    const Diagnostics* diagnostics = nullptr;  // of model and run
    const ReadOptions* read = nullptr;         // what the model was read with; null: nothing but its file

    Day dayOf(std::size_t step) const { return model->simulation.start + static_cast<Day>(step); }
    const Flow* find(OutputPort output) const;
};

// The model file, then its tables and series, with those of the baseline that it is compared with.
std::vector<std::string> inputPaths(const Model& model, const Model* baseline = nullptr);

// To be asked for before the run.
std::vector<InputFile> inputsOf(const std::vector<std::string>& paths);

Results collectResults(const Model& model, const Record& record, const EngineOutputs& outputs,
                       const RecordingPlan& plan, const EngineRun& run);

}  // namespace kesto
