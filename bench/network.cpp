#include "network.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "weather.h"

using namespace code;

namespace {

constexpr std::int32_t kFirstGroup = 100001;
constexpr std::int32_t kFirstComponent = 1000001;
constexpr std::int32_t kAppliances = 11;

template <typename Row>
std::int32_t count(const std::vector<Row>& table) {
    return static_cast<std::int32_t>(table.size());
}

template <typename Row>
std::size_t bytes(const std::vector<Row>& table) {
    return table.size() * sizeof(Row);
}

[[noreturn]] void stop(const char* text) {
    std::fprintf(stderr, "kesto_bench: %s\n", text);
    std::exit(1);
}

// Of the first element that each entry points to.
template <typename Entry>
void require(const Entry* entries, std::int32_t count, std::int32_t steps, const auto& value) {
    for (std::int32_t i = 0; i < count; ++i) {
        double total = 0.0;
        for (std::int32_t k = 0; k < steps; ++k)
            total += static_cast<double>(value(entries[i], k));
        if (!std::isfinite(total)) stop("a record or a state is no number");
        if (total <= 0.0) {
            std::fprintf(stderr, "%d: ", entries[i].id);
            stop("a record or a state stays empty");
        }
    }
}

}  // namespace

Network::Network(std::int32_t nSteps) : specifications_(allBrands()) {
    record_.nSteps = nSteps;
    record_.StartTime = 1325376000;  // 2012-01-01
    record_.TimeStep = 1.0F;
    record_.Latitude = 47.6F;
}

Network::~Network() {
    FreeAUEglobals(&record_);
}

SeriesEntry Network::series(std::int32_t id, std::int32_t perStep, const std::function<OfStep>& value) {
    std::vector<float> numbers;
    for (std::int32_t k = 0; k < steps() * perStep; ++k)
        numbers.push_back(value(k));
    values_.push_back(std::move(numbers));
    return {id, values_.back().data()};
}

std::int32_t Network::addGroup() {
    groups_.push_back(kFirstGroup + count(groups_));
    rain_.push_back(series(groups_.back(), 1, rainfall));
    return groups_.back();
}

void Network::giveHousehold(std::int32_t group) {
    uses_.push_back(series(group, kAppliances, [](std::int32_t k) { return 0.2F + 0.8F * chance(k); }));
    occupancy_.push_back(series(group, 1, [](std::int32_t k) { return k % 7 < 5 ? 2.0F : 3.0F; }));
    fluctuation_.push_back(series(group, 1, [](std::int32_t k) { return k % 30 < 15 ? 1.0F : 1.1F; }));
}

void Network::giveWeather(std::int32_t group) {
    temperature_.push_back(series(group, 1, temperature));
    coldest_.push_back(series(group, 1, [](std::int32_t k) { return temperature(k) - 4.0F; }));
    warmest_.push_back(series(group, 1, [](std::int32_t k) { return temperature(k) + (k % 3 == 0 ? 4.0F : 7.0F); }));
    wind_.push_back(series(group, 1, [](std::int32_t k) { return k % 5 == 0 ? 30.0F : 12.0F; }));
}

std::int32_t Network::add(Type type, std::int32_t group, float size) {
    return add(type, group, size, type);
}

std::int32_t Network::add(Type type, std::int32_t group, float size, Brand brand) {
    const std::int32_t id = kFirstComponent + components();
    rows_.push_back(
        {static_cast<float>(id), static_cast<float>(type), static_cast<float>(group), static_cast<float>(brand), size});
    return id;
}

void Network::connect(std::int32_t sender, std::int32_t senderPort, std::int32_t receiver, std::int32_t receiverPort) {
    connections_.push_back({connections() + 1, sender, senderPort, receiver, receiverPort});
}

void Network::give(Table Network::*table, std::int32_t component, OfStep value) {
    (this->*table).push_back(series(component, 1, value));
}

void Network::startAt(Table& table, std::int32_t component, float value) {
    table.push_back(series(component, 1, [&](std::int32_t) { return value; }));
    initial_.emplace_back(table.back().Value, value);
}

void Network::store(std::int32_t component, float quantity) {
    startAt(quantities_, component, quantity);
}

void Network::storeQuality(std::int32_t component, float quality) {
    startAt(qualities_, component, quality);
}

void Network::balance(std::int32_t splitter, std::int32_t member, float beta) {
    members_.push_back({member});
    splits_.push_back({splitter, 1, members_.back().data(), beta});
}

void Network::sortByType() {
    std::stable_sort(rows_.begin(), rows_.end(),
                     [](const ComponentRow& a, const ComponentRow& b) { return a.techid < b.techid; });
}

void Network::seal() {
    const auto point = [&](auto* AUEglobals::*table, std::int32_t AUEglobals::*size, auto& rows) {
        record_.*table = rows.data();
        record_.*size = count(rows);
    };
    point(&AUEglobals::PotCompIds, &AUEglobals::nPotComps, groups_);
    point(&AUEglobals::TechSpecs, &AUEglobals::nTechSpecs, specifications_);
    point(&AUEglobals::Net_Compnt, &AUEglobals::nComps, rows_);
    point(&AUEglobals::Net_Conn, &AUEglobals::nConns, connections_);
    point(&AUEglobals::FreqSer, &AUEglobals::nFreqSer, uses_);
    point(&AUEglobals::Rainfall, &AUEglobals::nRainfall, rain_);
    point(&AUEglobals::Temp, &AUEglobals::nTemp, temperature_);
    point(&AUEglobals::Tmin, &AUEglobals::nTmin, coldest_);
    point(&AUEglobals::Tmax, &AUEglobals::nTmax, warmest_);
    point(&AUEglobals::Wind, &AUEglobals::nWind, wind_);
    point(&AUEglobals::Multpls, &AUEglobals::nMultpls, multipliers);
    point(&AUEglobals::Threshold, &AUEglobals::nThreshold, thresholds);
    point(&AUEglobals::Occup, &AUEglobals::nOccup, occupancy_);
    point(&AUEglobals::Dmdflct, &AUEglobals::nDmdflct, fluctuation_);
    point(&AUEglobals::InsDmd, &AUEglobals::nInsDmd, demands);
    point(&AUEglobals::WatQuant, &AUEglobals::nWatQuant, quantities_);
    point(&AUEglobals::WatQual, &AUEglobals::nWatQual, qualities_);
    point(&AUEglobals::Splits, &AUEglobals::nSplits, splits_);
}

void Network::run(std::int32_t firstStep, std::int32_t lastStep) {
    if (KESTO_simul(&record_, firstStep, lastStep) != KESTO_SUCCESS) stop(record_.ErrMsg);
}

void Network::reset() {
    FreeAUEglobals(&record_);
    // All further elements are written before they are read.
    for (const auto& [element, value] : initial_)
        *element = value;
}

void Network::requireSound() const {
    const auto recorded = [](const SignalSeriesEntry& entry, std::int32_t k) {
        return entry.Signal[k].quantity + std::max(entry.Signal[k].quality, 0.0F);
    };
    const auto held = [](const SeriesEntry& entry, std::int32_t k) { return entry.Value[k]; };
    require(record_.Logs, record_.nLogs, steps(), recorded);
    require(record_.WatBod, record_.nWatBod, steps(), recorded);
    require(record_.WatQuant, record_.nWatQuant, steps(), held);
    require(record_.WatQual, record_.nWatQual, steps(), held);
}

std::vector<int> Network::countTypes() const {
    std::vector<int> counts(kQuotaLimiter + 1);
    for (const ComponentRow& row : rows_)
        ++counts[static_cast<std::size_t>(row.techid)];
    return counts;
}

std::size_t Network::hostBytes() const {
    std::size_t sum = bytes(groups_) + bytes(rows_) + bytes(connections_) + bytes(specifications_) + bytes(splits_);
    for (const std::vector<float>& values : values_)
        sum += bytes(values) + sizeof(SeriesEntry);
    return sum;
}

std::size_t Network::outputBytes() const {
    const std::vector<int> counts = countTypes();
    const auto records =
        static_cast<std::size_t>(counts[kLogger] + counts[kDelay] + counts[kQuotaLimiter] + counts[kWaterBody]);
    return static_cast<std::size_t>(steps()) * (6 * bytes(groups_) + records * sizeof(Signal));
}
