// The record that the engine gets: a model's tables with ids for names, and the memory behind it.
#pragma once

#include <array>
#include <deque>
#include <map>
#include <memory>
#include <vector>

#include "AUEglobals.h"
#include "model.h"
#include "recordings.h"
#include "series.h"
#include "shared_memory.h"

namespace kesto {

// A series that the engine writes, or that was given for it to read: WatQuant or WatQual.
struct StateSeries {
    int component;
    SeriesKind kind;
    std::string_view unit;
    float* values;  // from the first step on
    bool isState;   // the type writes it
};

// Where the outputs of a run stand, in order of the record's tables.
struct EngineOutputs {
    std::vector<Signal*> logs, waterBodies;
    std::vector<float*> potentials;  // of all groups with potentials, one potential after the other
};

// What the engine's process shares with its parent besides the record.
struct EngineState {
    std::int32_t* status = nullptr;
    std::int32_t* finished = nullptr;  // 1 once the engine has returned
    std::int32_t* kept = nullptr;      // 1 once its outputs stand in shared memory
};

class Record {
  public:
    Record(const Model& model, SeriesValues& series, const RecordingPlan& plan);

    AUEglobals& globals() { return *globals_; }
    const AUEglobals& globals() const { return *globals_; }
    std::size_t steps() const { return steps_; }
    // Days before the first step, at the beginning of the engine's series: their states are known, and nothing else.
    std::size_t daysBefore() const { return daysBefore_; }
    const EngineState& state() const { return state_; }

    // Memory for outputs that the engine's process leaves to its parent. It takes none before it is written.
    const EngineOutputs& shared() const { return shared_; }
    // The engine's own tables, in the process that has run it; shared memory where it has none.
    EngineOutputs own() const;
    // From the one to the other, so many steps. Takes no memory of this process, since that may be in disorder.
    void moveToShared(std::size_t done);

    const std::vector<StateSeries>& states() const { return states_; }

    // Order of the engine's tables: component, or -1 - i for the logger of plan.logged[i].
    const std::vector<int>& logs() const { return logs_; }
    const std::vector<int>& waterBodies() const { return waterBodies_; }
    const std::vector<int>& potentialGroups() const { return potentialGroups_; }

  private:
    void listOutputs(const RecordingPlan& plan);
    void shareOutputs();
    std::size_t sharedBytes(std::size_t states) const;
    void fillComponents(const RecordingPlan& plan);
    void fillConnections(const RecordingPlan& plan);
    void fillSpecifications();
    void fillGroupSeries();
    void fillUses();
    float* weave(const std::array<const Floats*, kUseKinds>& daily);
    void fillOwnSeries();
    void fillStates();
    void fillSplits();
    void point();

    std::vector<SeriesEntry>& table(SeriesKind kind) { return tables_[static_cast<std::size_t>(kind)]; }
    std::size_t length() const { return daysBefore_ + steps_; }  // of the engine's series
    float* dailyOf(SourceIndex source);
    float beforeFirst(SourceIndex source, bool isState);
    void add(SeriesKind kind, int id, SourceIndex source, float standard);
    float* constantSeries(float value);
    std::vector<std::pair<int, SeriesNeed>> stateNeeds() const;

    const Model& model_;
    SeriesValues& series_;
    std::size_t daysBefore_, steps_;
    std::vector<int> loggerIds_;
    std::vector<int> logs_, waterBodies_, potentialGroups_;
    std::unique_ptr<SharedMemory> memory_;
    AUEglobals* globals_ = nullptr;
    EngineState state_;
    EngineOutputs shared_;
    std::vector<StateSeries> states_;

    std::vector<ComponentRow> components_;
    std::vector<ConnectionRow> connections_;
    std::vector<SpecificationRow> specifications_;
    std::vector<std::int32_t> potentialIds_;
    std::array<std::vector<SeriesEntry>, kSeriesKinds> tables_;
    std::vector<SplitEntry> splits_;
    std::deque<std::vector<std::int32_t>> splitMembers_;
    std::deque<Floats> owned_;
    std::map<float, float*> constants_;
    std::map<SourceIndex, float*> longer_;  // series with a day before the first
    std::vector<std::shared_ptr<const Floats>> inputs_;
};

}  // namespace kesto
