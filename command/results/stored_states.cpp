#include "stored_states.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "files.h"
#include "run_apart.h"
#include "stored_series.h"

namespace kesto {

namespace {

using Json = nlohmann::json;

constexpr std::chrono::minutes kLongest{10};

// As text, from the process that reads: values by their bits, since they need not be numbers.
std::string textOf(const StoredSeries& stored, Day day) {
    const std::vector<Day>& days = stored.days();
    const auto found = std::find(days.begin(), days.end(), day);
    const auto step = static_cast<std::size_t>(found - days.begin());
    std::vector<std::size_t> wanted;
    for (const Quantity quantity : {Quantity::storage, Quantity::storeQuality}) {
        for (std::size_t i = 0; i < stored.entries().size(); ++i) {
            if (stored.entries()[i].quantity == quantity) wanted.push_back(i);
        }
    }
    const std::vector<std::vector<float>> values = stored.valuesOf(wanted);
    Json states = Json::array();
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const SeriesEntry& entry = stored.entries()[wanted[i]];
        const SeriesKind kind = entry.quantity == Quantity::storage ? SeriesKind::storage : SeriesKind::quality;
        if (step >= values[i].size()) continue;
        states.push_back({kind, entry.of, entry.unit, std::bit_cast<std::uint32_t>(values[i][step])});
    }
    Json held = Json::array();
    if (!days.empty()) held = {days.front(), days.back()};
    return Json{{"held", held}, {"has_day", found != days.end()}, {"states", states}}.dump(
        -1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

StoredStates readStatesOf(Day day, const std::string& folder) {
    const StoredResults stored = storedResults(folder);
    const WrittenFile* const netcdf = find(stored.files, "results.nc");
    const WrittenFile* const file = netcdf ? netcdf : find(stored.files, "states.csv");
    const std::vector<WrittenFile> files = file ? std::vector{*file} : std::vector<WrittenFile>();
    StoredStates result;
    result.file = file ? joined(folder, file->name) : folder;
    // The NetCDF library crashes on some files that are broken, and goes round in others for ever.
    const Json read = Json::parse(answerApart(fmt::format("cannot read {}, which may be broken", result.file), kLongest,
                                              [&] { return textOf(StoredSeries(folder, files), day); }));
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
