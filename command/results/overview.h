// A run in the large, as its page shows it: the paths of the water, the months, the years, the stores, and which series
// matter. Of a size that does not grow with the network. Components count as often as they stand for.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "account.h"
#include "figures.h"
#include "network_paths.h"
#include "run_months.h"

namespace kesto {

// By month, or by year.
struct OverviewRow {
    std::string label;
    std::string_view kind;
    std::string_view unit;
    std::vector<double> values;
};

struct StoreOverview {
    int component;
    std::string_view unit;
    std::optional<double> capacity;        // in this unit
    double emptyBelow, fullFrom;           // levels; full where the capacity is known
    double emptyShare = 0, fullShare = 0;  // of the days
};

// The sum of one output, or the mean of the storages, of all components of a type, or of those in a group.
struct SeriesSum {
    int group;  // or kOutside: of the whole network
    const Type* type;
    int port;  // 0: what they store
    Carries carries;
    std::string_view unit;
    std::vector<double> months;
};

// What tanks, wells and other sources together were asked for.
struct ServiceOverview {
    std::string label;
    int components = 0;
    double demand = 0, served = 0;     // L
    std::optional<double> daysInFull;  // share of the days with a demand; the mean of the components
};

struct OverflowOverview {
    std::string label;
    double litres = 0, inflow = 0;  // of what has an overflow
};

// A series that the page shows at first, or has ready, by day.
struct ShownSeries {
    std::string name;  // as StoredSeries has it
    bool isFirst = false;
};

struct Overview {
    const Model* model = nullptr;
    Day start = 0;
    RunMonths months{0, 0};
    NetworkPaths paths;
    std::optional<double> use;      // L; nothing: not all of it was recorded
    std::optional<double> persons;  // that use it
    std::optional<ServiceOverview> service;
    std::optional<OverflowOverview> overflow;
    std::vector<OverviewRow> supply;  // what was used, by where it came from, by month
    std::vector<OverviewRow> years;
    std::vector<StoreOverview> stores;
    std::size_t moreStores = 0;
    std::vector<SeriesSum> sums;
    std::vector<ShownSeries> shown;
    std::size_t series = 0;  // that stand in the files, but for qualities
};

// `recorded` must have the sums of these months. Of flows only the outputs that are kept stand in the files.
Overview overviewOf(const Recorded& recorded, const Results& results, const RunMonths& months,
                    const Multiplicity& multiplicity, const ComponentSums& sums, const WaterPaths& paths,
                    const Account& account, const Figures& figures, const std::vector<OutputPort>& kept);

// For other programs, in one line. Writes it as overview.json into a folder and returns its path.
std::string toJson(const Overview& overview);
std::string writeOverview(const Overview& overview, const std::string& folder);

}  // namespace kesto
