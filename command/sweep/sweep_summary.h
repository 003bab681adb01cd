// members.json, which says what a sweep is made of and what its columns are; and the same for a person.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "findings.h"
#include "sweep_files.h"
#include "written_files.h"

namespace kesto {

// What the results are of.
struct SweepSubject {
    std::string model, title, designTable;  // path of the table; empty: there is none
    std::vector<std::string> keyUnits;      // of the keys that are varied
};

// The same for the same members, whenever and in whatever slices they ran.
nlohmann::ordered_json membersJson(const SweepSubject& subject, const nlohmann::ordered_json& made,
                                   const SweepSummary& summary, const Findings& findings,
                                   const std::vector<WrittenFile>& files);

// Of the figures that vary, a line each.
std::string sweepText(const nlohmann::ordered_json& members, const std::string& folder);

// Members that did not run to their end.
std::size_t unfinishedIn(const nlohmann::ordered_json& members);

}  // namespace kesto
