// The files that a sweep leaves: members.csv, a row for each member, and members.json, what they are made of.
#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "findings.h"
#include "journal.h"

namespace kesto {

inline constexpr std::string_view kMembersTable = "members.csv";
inline constexpr std::string_view kMembersFile = "members.json";

// Rows of the whole design, counted from 1, both included.
struct Slice {
    std::size_t first = 1, last = 0;
    std::size_t size() const { return last - first + 1; }
};

// A figure over all members that have one.
struct FigureRange {
    MemberColumn column;
    double lowest, median, highest;
    std::size_t lowestMember, highestMember;  // the first of them
};

// What the rows have come to.
struct SweepSummary {
    std::vector<std::string> keys;
    MemberColumns columns;
    std::vector<std::pair<std::string, std::size_t>> outcomes;  // members by outcome
    std::vector<FigureRange> varying;                           // of key figures
    Findings findings;                                          // of the results
};

// What members were given, as it was written under each key.
struct MemberCells {
    std::vector<std::string> keys;
    std::function<std::vector<std::string>(std::size_t member)> of;
};

// Columns have distinct names: a figure of the name of a key has "figure." before it.
std::string columnOf(const std::string& figure, const std::vector<std::string>& keys);
std::string figureIn(const std::string& column, const std::vector<std::string>& keys);

// Writes the table, row by row, and returns what it has come to. Throws std::runtime_error.
SweepSummary writeMembersTable(const std::string& path, const MemberCells& cells, const Slice& slice,
                               const Journal& journal);

}  // namespace kesto
