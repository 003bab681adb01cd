#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "files.h"
#include "overview.h"
#include "written_files.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

// To nine digits, more than single precision has: the rest is what adding up has left.
Json rounded(double value) {
    if (!std::isfinite(value)) return nullptr;
    const std::string digits = fmt::format("{:.9g}", value);
    double result = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), result);
    return result;
}

Json numbers(const std::vector<double>& values) {
    Json list = Json::array();
    for (const double value : values) {
        list.push_back(rounded(value));
    }
    return list;
}

Json pathsOf(const Overview& overview) {
    Json nodes = Json::array(), links = Json::array();
    const auto id = [](std::size_t node) { return fmt::format("p{}", node); };
    for (std::size_t i = 0; i < overview.paths.nodes.size(); ++i) {
        const PathNode& node = overview.paths.nodes[i];
        nodes.push_back({{"id", id(i)},
                         {"label", node.label},
                         {"kind", toText(node.kind)},
                         {"litres", node.litres},
                         {"components", node.components}});
    }
    for (const PathLink& link : overview.paths.links) {
        links.push_back({{"from", id(link.from)}, {"to", id(link.to)}, {"litres", link.litres}});
    }
    return {{"nodes", std::move(nodes)}, {"links", std::move(links)}};
}

Json monthsOf(const Overview& overview) {
    Json series = Json::array();
    for (const OverviewRow& row : overview.supply) {
        series.push_back({{"label", row.label}, {"kind", row.kind}, {"values", numbers(row.values)}});
    }
    Json whole = Json::array();
    for (std::size_t month = 0; month < overview.months.count(); ++month) {
        whole.push_back(overview.months.isWhole(month));
    }
    return {{"first", fmt::format("{:04}-{:02}", overview.months.year(0), overview.months.ofYear(0))},
            {"whole", std::move(whole)},
            {"unit", "L"},
            {"series", std::move(series)}};
}

Json yearsOf(const Overview& overview) {
    Json years = Json::array(), whole = Json::array(), rows = Json::array();
    const RunMonths& months = overview.months;
    for (std::size_t month = 0; month < months.count(); ++month) {
        if (years.empty() || years.back() != months.year(month)) {
            years.push_back(months.year(month));
            whole.push_back(months.ofYear(month) == 1 && months.isWhole(month));
        }
        const bool isLast = month + 1 == months.count();
        if (isLast && (months.ofYear(month) != 12 || !months.isWhole(month))) whole.back() = false;
    }
    for (const OverviewRow& row : overview.years) {
        rows.push_back({{"label", row.label}, {"unit", row.unit}, {"values", numbers(row.values)}});
    }
    return {{"years", std::move(years)}, {"whole", std::move(whole)}, {"rows", std::move(rows)}};
}

Json storesOf(const Overview& overview) {
    Json list = Json::array();
    for (const StoreOverview& store : overview.stores) {
        const Component& component = overview.model->components[at(store.component)];
        Json row{{"name", component.name}, {"type", component.type->name}, {"unit", store.unit}};
        if (component.group >= 0) row["group"] = overview.model->groups[at(component.group)].name;
        if (store.capacity && std::isfinite(*store.capacity)) row["capacity"] = *store.capacity;
        row["empty_share"] = store.emptyShare;
        row["empty_below"] = store.emptyBelow;
        if (store.capacity) {
            row["full_share"] = store.fullShare;
            row["full_from"] = store.fullFrom;
        }
        list.push_back(std::move(row));
    }
    Json stores{{"list", std::move(list)}};
    if (overview.moreStores > 0) stores["more"] = overview.moreStores;
    return stores;
}

Json sumsOf(const Overview& overview) {
    Json sums = Json::array();
    for (const SeriesSum& sum : overview.sums) {
        Json row{{"type", sum.type->name},
                 {"output", sum.port == 0 ? std::string() : portName(sum.type->out, sum.port)},
                 {"unit", sum.unit},
                 {"months", numbers(sum.months)}};
        if (sum.group >= 0) row["group"] = overview.model->groups[at(sum.group)].name;
        if (sum.port > 0) row["carries"] = toText(sum.carries);
        sums.push_back(std::move(row));
    }
    return sums;
}

Json shownOf(const Overview& overview) {
    Json shown = Json::array();
    for (const ShownSeries& series : overview.shown) {
        Json row{{"name", series.name}};
        if (series.isFirst) row["first"] = true;
        shown.push_back(std::move(row));
    }
    return shown;
}

Json overviewJson(const Overview& overview) {
    Json json;
    if (overview.use) json["use"] = *overview.use;
    if (overview.persons) json["persons"] = *overview.persons;
    if (const auto& service = overview.service) {
        json["service"] = {{"label", service->label},
                           {"components", service->components},
                           {"demand", service->demand},
                           {"served", service->served}};
        if (service->daysInFull) json["service"]["days_in_full"] = *service->daysInFull;
    }
    if (const auto& overflow = overview.overflow) {
        json["overflow"] = {{"label", overflow->label}, {"litres", overflow->litres}, {"inflow", overflow->inflow}};
    }
    if (!overview.paths.links.empty()) json["paths"] = pathsOf(overview);
    if (!overview.supply.empty()) json["months"] = monthsOf(overview);
    if (!overview.years.empty()) json["years"] = yearsOf(overview);
    if (!overview.stores.empty()) json["stores"] = storesOf(overview);
    if (!overview.sums.empty()) json["sums"] = sumsOf(overview);
    json["series"] = overview.series;
    json["shown"] = shownOf(overview);
    return json;
}

}  // namespace

std::string toJson(const Overview& overview) {
    return overviewJson(overview).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string writeOverview(const Overview& overview, const std::string& folder) {
    const std::string path = joined(folder, kOverviewFile);
    writeFile(path, toJson(overview) + "\n");
    return path;
}

}  // namespace kesto
