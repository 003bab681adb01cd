// What stands where in a JSON file that a run has left, so that a page is not made of something else.
#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "written_files.h"

namespace kesto {

enum class Shape { text, number, numberOrNull, boolean, day, month };

struct ExpectedShape {
    std::string_view path;  // "months.series[].values[]": all items of a list
    Shape shape;
    bool isNeeded = false;  // where that which holds it is there; else it may be null, too
};

// Throws std::runtime_error that names the file, the place in it, and what is expected there.
void expectShape(const nlohmann::ordered_json& content, std::span<const ExpectedShape> expected,
                 const std::string& file);

// summary.json, so far as a page shows it.
void expectSummary(const nlohmann::ordered_json& summary, const std::string& file);

// overview.json of a folder of results, as it is expected; an empty object: an earlier version wrote none.
nlohmann::ordered_json readOverview(const std::string& folder, const std::vector<WrittenFile>& files);

}  // namespace kesto
