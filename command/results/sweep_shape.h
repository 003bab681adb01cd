// What every member of a sweep leaves: the same series over the same periods, as one block of floats.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "results.h"
#include "series_tables.h"

namespace kesto {

enum class Every { day, month, year };

std::string_view toText(Every every);
std::optional<Every> everyFrom(std::string_view text);

// Both days included. Months and years at either end of a run hold the days of the run.
struct Period {
    Day first, last;
    bool operator==(const Period&) const = default;
};

std::vector<Period> periodsOf(Day start, Day end, Every every);

// Series of one table.
struct SweepTable {
    const SeriesTable* table;
    std::vector<std::string> names;
    std::vector<std::string> carries;  // of flows

    bool operator==(const SweepTable&) const = default;
};

struct SweepShape {
    Every every = Every::day;
    std::vector<Period> periods;
    std::vector<SweepTable> tables;  // none is empty

    bool operator==(const SweepShape&) const = default;

    // Values of one member: row after row, each with a value for each period. The rows of a table of flows are the
    // quantities of all of them, then their qualities.
    std::size_t rows() const;
    std::size_t values() const { return rows() * periods.size(); }
};

// Of the flows and states that `results` holds, which need not have run. The caller drops what nobody asked for.
SweepShape sweepShapeOf(const Results& results, Every every);

// Lays out what a member has left that ran to its end; its flows and states are those that the shape was made of.
// Over months and years a flow is the sum, its quality the mean weighted by the flow, and a state the last one.
void layOut(const SweepShape& shape, const Results& results, std::span<float> values);

// What stands for a member that has left nothing.
void layOutMissing(const SweepShape& shape, std::span<float> values);

}  // namespace kesto
