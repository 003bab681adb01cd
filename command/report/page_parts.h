// The parts of the page's data.
#pragma once

#include <nlohmann/json.hpp>
#include <span>

#include "page_data.h"

namespace kesto {

using Json = nlohmann::ordered_json;

// Most rows of a table, and most components with details: what a person may still want to scroll through.
inline constexpr std::size_t kMostRows = 300;

// Key figures, of the summary's figures and account, and of what the run has left about the whole network; null:
// nothing.
Json cardsOf(const Json& summary, const Json& overview);

// Components, connections and groups of the model.
Json networkOf(const PageSource& source, const Json& summary, const Json& overview);

// Sums of groups and types by month, the series that are shown by day, and the level of each store that the page has.
void addSeries(const PageSource& source, const Json& summary, const Json& overview, Json& page);

// Little-endian floats as base64: exact, and a third of the text. What is no finite number is a gap.
std::string packed(const std::vector<float>& values);
std::string packed(std::span<const std::int32_t> values);

}  // namespace kesto
