// What a member of a sweep hands over from its process, as bytes.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine_run.h"

namespace kesto {

struct MemberColumn {
    std::string name, unit;
    bool operator==(const MemberColumn&) const = default;
};

// The figures of members: most have the same.
struct MemberColumns {
    std::vector<MemberColumn> all;
    std::size_t key = 0;  // how many of them, from the first, are not of single components
    bool operator==(const MemberColumns&) const = default;
};

struct MemberResult {
    Outcome outcome = Outcome::crashed;
    std::string message;
    MemberColumns columns;
    std::vector<double> values;  // of the columns; not a number: there is none
    std::string findings;        // JSON, as Findings gives it; empty: none
};

// Throws std::length_error when there is not enough room. Returns how much is used.
std::size_t toBytes(const MemberResult& result, std::span<char> room);
MemberResult memberResultFrom(std::string_view bytes);

}  // namespace kesto
