// What the page is told of a run: one JSON object, of a size that does not grow with the network. Amounts are in litres
// and kilowatt-hours; the page picks units that a person reads. What a model has nothing of is left out.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "model.h"
#include "series.h"
#include "written_files.h"

namespace kesto {

// What a page is made of.
struct PageSource {
    const std::string& folder;
    const StoredResults& stored;
    const Model* model = nullptr;    // null: it is not there, or not fit
    SeriesValues* series = nullptr;  // of the model
    bool isDrawn = false;            // a picture of the network stands in the page
    const std::vector<std::string>& changes;
    std::vector<std::string> shown = {};  // series to show by day, as after --series; empty: those that matter
};

nlohmann::ordered_json pageData(const PageSource& source);

}  // namespace kesto
