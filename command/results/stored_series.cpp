#include "stored_series.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <tuple>

#include "files.h"
#include "stored_series_files.h"

namespace kesto {

namespace {

constexpr std::array<std::string_view, 5> kQuantities{"flow", "storage", "quality", "store_quality", "potential"};

}  // namespace

std::string_view toText(Quantity quantity) {
    return kQuantities[static_cast<std::size_t>(quantity)];
}

std::string SeriesEntry::name() const {
    switch (quantity) {
        case Quantity::storage:
            return of + ":storage";
        case Quantity::quality:
        case Quantity::storeQuality:
            return of + ":quality";
        case Quantity::flow:
        case Quantity::potential:
            break;
    }
    return of;
}

StoredSeries::StoredSeries(const std::string& folder, const std::vector<WrittenFile>& files)
    : files_(find(files, "results.nc") ? openNetcdfSeries(joined(folder, "results.nc")) : openCsvSeries(folder, files)),
      days_(files_->days()) {
    const std::vector<SeriesEntry> found = files_->entries();
    places_.resize(found.size());
    std::iota(places_.begin(), places_.end(), 0U);
    // Flows in L stand before those in mm, and qualities as the flows that have them; a stranger's may be of no flow.
    using Key = std::pair<std::string_view, std::size_t>;
    std::map<std::string_view, Key> flows;
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (found[i].quantity == Quantity::flow) flows.emplace(found[i].of, Key(found[i].unit, i));
    }
    const auto keyOf = [&](std::size_t place) {
        const SeriesEntry& entry = found[place];
        Key key{entry.unit, place};
        if (entry.quantity == Quantity::quality) {
            const auto flow = flows.find(entry.of);
            key = flow == flows.end() ? Key("~", place) : flow->second;
        } else if (entry.quantity == Quantity::potential) {
            key.first = {};
        }
        return std::tuple_cat(std::tuple(entry.quantity), key);
    };
    std::stable_sort(places_.begin(), places_.end(), [&](std::size_t a, std::size_t b) { return keyOf(a) < keyOf(b); });
    for (const std::size_t place : places_) {
        entries_.push_back(found[place]);
    }
}

StoredSeries::~StoredSeries() = default;

std::vector<std::vector<float>> StoredSeries::valuesOf(const std::vector<std::size_t>& wanted) const {
    std::vector<std::size_t> places;
    for (const std::size_t index : wanted) {
        places.push_back(places_[index]);
    }
    return files_->valuesOf(places);
}

}  // namespace kesto
