// What the stores held at the end of a day, out of the results of a run.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "calendar.h"
#include "catalogue.h"

namespace kesto {

struct StoredState {
    SeriesKind kind;
    std::string name, unit;
    float value;
};

struct StoredStates {
    std::string file;                         // that holds them; the folder when no file does
    std::optional<std::pair<Day, Day>> held;  // first and last day; none: no store at all
    bool hasDay = false;
    std::vector<StoredState> states;  // of the day
};

// Throws std::runtime_error when the folder holds no results of a run, or broken ones.
StoredStates readStatesOf(Day day, const std::string& folder);

}  // namespace kesto
