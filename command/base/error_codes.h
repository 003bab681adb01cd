// What an error is about, under a short name that stays, for programs.
//
// One row each: diagnostics.error("no-file", …) compiles only with the name of a row.
#pragma once

#include <string_view>

namespace kesto {

struct ErrorCode {
    std::string_view name;
    std::string_view meaning;  // for `kesto codes` and docs/guide/warnings.md
};

inline constexpr ErrorCode kErrorCodes[] = {
    {"no-file", "a file that cannot be read"},
    {"not-toml", "a model file that is not valid TOML, or whose tables nest too deep"},
    {"bad-table", "a CSV file that is no table: empty, cells too few or too many, a quote that is not closed"},
    {"missing-key", "a table of the model without a key that it must have"},
    {"unknown-key", "a key that has no meaning where it stands"},
    {"wrong-value", "a value of another kind, unit or range than expected"},
    {"unknown-name", "a name of a component, group, brand, type, port, parameter, column or code that there is not"},
    {"repeated", "a name, id, series or parameter that is given twice"},
    {"no-components", "a model without components"},
    {"missing-brand", "a component whose type needs parameters, and that has no brand"},
    {"missing-parameter", "a brand without a parameter that one of its components reads"},
    {"missing-size", "a component without the size that its type needs"},
    {"missing-group", "a component without the group whose series it reads"},
    {"missing-series", "a series that a component reads and that nothing gives"},
    {"missing-latitude", "a type that uses solar radiation, and no latitude"},
    {"missing-reservoir", "a component that finds fewer reservoirs in its group than it must"},
    {"bad-split", "a split of a splitter whose members store nothing or have no capacity, or one too many"},
    {"no-number", "a cell of a series that is no number"},
    {"bad-dates", "a series without a row for each day of the run"},
    {"crossed-temperatures", "a lowest temperature above the highest of its day"},
    {"daily-only", "a type that works on daily steps, and another time step"},
    {"too-large", "more days or components than the engine can hold"},
    {"calendar", "a period that the engine's calendar cannot show"},
    {"wrong-inputs", "a component to which too many or too few components send"},
    {"no-order", "a loop without a delay"},
    {"untraceable", "sources that cannot be traced"},
    {"cannot-record", "an output that was asked for and cannot be recorded unchanged"},
    {"missing-state", "results to go on from that do not hold the day before, or not the state of a store"},
    {"not-exact", "a component that remembers more than the states of a day hold"},
    {"run-failed", "the engine stopped the run"},
    {"engine-crashed", "the engine's process ended"},
    {"interrupted", "the run was interrupted"},
    {"out-of-memory", "a model or a run for which memory does not suffice"},
    {"over-input", "results that would take the place of a file that the run reads"},
    {"not-results", "results that would take the place of a file that no run has left there"},
    {"folder-busy", "another process that is writing results into the folder"},
    {"other-sweep", "a folder with another sweep, which this one cannot go on with"},
    {"cannot-write", "results that could not be written"},
};

// The name of a row, known to be one when the program is compiled.
class ErrorName {
  public:
    consteval ErrorName(const char* name) : code_(find(name)) {}
    const ErrorCode& code() const { return *code_; }

  private:
    static consteval const ErrorCode* find(std::string_view name) {
        for (const ErrorCode& code : kErrorCodes) {
            if (code.name == name) return &code;
        }
        throw "no error has this name";
    }
    const ErrorCode* code_;
};

}  // namespace kesto
