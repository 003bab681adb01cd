#include "stored_states.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "files.h"
#include "results_reader.h"
#include "run_apart.h"

namespace kesto {

namespace {

using Json = nlohmann::json;

constexpr std::chrono::minutes kLongest{10};

// As text, from the process that reads: values by their bits, since they need not be numbers.
std::string textOf(const ReadResults& results, Day day) {
    const auto found = std::find(results.days.begin(), results.days.end(), day);
    const auto step = static_cast<std::size_t>(found - results.days.begin());
    Json states = Json::array();
    const auto add = [&](SeriesKind kind, const std::vector<NamedSeries>& list) {
        for (const NamedSeries& series : list) {
            if (step >= series.values.size()) continue;
            states.push_back({kind, series.name, series.unit, std::bit_cast<std::uint32_t>(series.values[step])});
        }
    };
    add(SeriesKind::storage, results.storages);
    add(SeriesKind::quality, results.storeQualities);
    Json held = Json::array();
    if (!results.days.empty()) held = {results.days.front(), results.days.back()};
    return Json{{"held", held}, {"has_day", found != results.days.end()}, {"states", states}}.dump(
        -1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

StoredStates readStatesOf(Day day, const std::string& folder) {
    const StoredResults stored = storedResults(folder);
    const WrittenFile* const file = statesFile(stored.files);
    StoredStates result;
    result.file = file ? joined(folder, file->name) : folder;
    // The NetCDF library crashes on some files that are broken, and goes round in others for ever.
    const Json read = Json::parse(answerApart(fmt::format("cannot read {}, which may be broken", result.file), kLongest,
                                              [&] { return textOf(readStates(folder, stored.files), day); }));
    expectUnchanged(folder, stored);
    if (!read.at("held").empty()) result.held = {read.at("held").at(0), read.at("held").at(1)};
    result.hasDay = read.at("has_day");
    for (const Json& row : read.at("states")) {
        result.states.push_back(
            {row.at(0), row.at(1), row.at(2), std::bit_cast<float>(row.at(3).get<std::uint32_t>())});
    }
    return result;
}

}  // namespace kesto
