#include "network.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

constexpr std::int32_t kFirstGroup = 100001;
constexpr std::int32_t kFirstComponent = 1000001;

enum Type : std::int32_t {
    kToilet = 1,
    kShower = 2,
    kWasher = 4,
    kLogger = 26,
    kSupplyLink = 27,
    kRoof = 28,
    kJunction = 30,
    kMixer = 31,
    kTank = 32,
    kLink = 35,
};

enum Brand : std::int32_t { kNone, kToiletBrand, kShowerBrand, kWasherBrand, kRoofBrand, kTankBrand, kLinkBrand };

SpecificationRow specification(Brand brand, int number, float value) {
    return {0.0F, 0.0F, static_cast<float>(brand), 0.0F, 1.0F, 1.0F, static_cast<float>(number), value, 0.0F};
}

// Each brand's rows in ascending order of number, as the engine's search wants them.
std::vector<SpecificationRow> brands() {
    std::vector<SpecificationRow> rows;
    for (const auto& [brand, litres] : {std::pair{kToiletBrand, 4.5F}, {kShowerBrand, 60.0F}, {kWasherBrand, 50.0F}}) {
        rows.push_back(specification(brand, 1, litres));
        rows.push_back(specification(brand, 3, 0.1F));
        rows.push_back(specification(brand, 12, 0.05F));
        rows.push_back(specification(brand, 13, 0.01F));
        rows.push_back(specification(brand, 25, 300.0F));
    }
    rows.push_back(specification(kRoofBrand, 25, 10.0F));
    rows.push_back(specification(kRoofBrand, 27, 0.1F));
    rows.push_back(specification(kTankBrand, 12, 0.0001F));
    rows.push_back(specification(kTankBrand, 13, 12.0F));
    rows.push_back(specification(kLinkBrand, 2, 0.0001F));
    rows.push_back(specification(kLinkBrand, 3, 0.0005F));
    rows.push_back(specification(kLinkBrand, 12, 0.01F));
    rows.push_back(specification(kLinkBrand, 13, 3.0F));
    return rows;
}

// A shower of rain every third day, heavier once a week.
std::vector<float> rainfall(std::int32_t nSteps) {
    std::vector<float> mm(static_cast<std::size_t>(nSteps));
    for (std::size_t k = 0; k < mm.size(); ++k)
        mm[k] = k % 7 == 0 ? 12.5F : k % 3 == 0 ? 4.2F : 0.0F;
    return mm;
}

std::int32_t count(const auto& table) {
    return static_cast<std::int32_t>(table.size());
}

}  // namespace

Network::Network(std::int32_t nSteps, std::int32_t nGroups) : specifications(brands()) {
    record.nSteps = nSteps;
    record.StartTime = 1325376000;  // 2012-01-01
    record.TimeStep = 1.0F;
    record.Latitude = 47.6F;
    const auto steps = static_cast<std::size_t>(nSteps);
    for (std::int32_t group = kFirstGroup; group < kFirstGroup + nGroups; ++group) {
        groups.push_back(group);
        rain.push_back(series(group, rainfall(nSteps)));
        uses.push_back(series(group, std::vector<float>(11 * steps, 0.6F)));
        occupancy.push_back(series(group, std::vector<float>(steps, 2.46F)));
        fluctuation.push_back(series(group, std::vector<float>(steps, 1.0F)));
    }
}

Network::~Network() {
    FreeAUEglobals(&record);
}

SeriesEntry Network::series(std::int32_t id, std::vector<float> numbers) {
    values.push_back(std::move(numbers));
    return {id, values.back().data()};
}

std::int32_t Network::add(std::int32_t type, std::int32_t group, std::int32_t brand, float size) {
    const std::int32_t id = kFirstComponent + components();
    rows.push_back({static_cast<float>(id), static_cast<float>(type),
                    static_cast<float>(groups.at(static_cast<std::size_t>(group))), static_cast<float>(brand), size});
    return id;
}

void Network::connect(std::int32_t sender, std::int32_t senderPort, std::int32_t receiver, std::int32_t receiverPort) {
    connections.push_back({count(connections) + 1, sender, senderPort, receiver, receiverPort});
}

void Network::store(std::int32_t component, float quantity) {
    stored.push_back(series(component, std::vector<float>(static_cast<std::size_t>(record.nSteps), quantity)));
    initial.push_back(quantity);
}

void Network::seal() {
    record.PotCompIds = groups.data();
    record.nPotComps = count(groups);
    record.TechSpecs = specifications.data();
    record.nTechSpecs = count(specifications);
    record.Net_Compnt = rows.data();
    record.nComps = count(rows);
    record.Net_Conn = connections.data();
    record.nConns = count(connections);
    record.FreqSer = uses.data();
    record.nFreqSer = count(uses);
    record.Rainfall = rain.data();
    record.nRainfall = count(rain);
    record.Occup = occupancy.data();
    record.nOccup = count(occupancy);
    record.Dmdflct = fluctuation.data();
    record.nDmdflct = count(fluctuation);
    record.WatQuant = stored.data();
    record.nWatQuant = count(stored);
}

void Network::run(std::int32_t firstStep, std::int32_t lastStep) {
    if (KESTO_simul(&record, firstStep, lastStep) == KESTO_SUCCESS) return;
    std::fprintf(stderr, "kesto_bench: %s\n", record.ErrMsg);
    std::exit(1);
}

void Network::reset() {
    FreeAUEglobals(&record);
    for (std::size_t i = 0; i < stored.size(); ++i)
        std::fill_n(stored[i].Value, record.nSteps, initial[i]);
}

void buildChain(Network& network, std::int32_t n) {
    std::int32_t before = network.add(kRoof, 0, kRoofBrand, 80.0F);
    for (std::int32_t i = 2; i < n; ++i) {
        const std::int32_t link = network.add(kLink, 0, kLinkBrand);
        network.connect(before, 1, link, 1);
        before = link;
    }
    network.connect(before, 1, network.add(kLogger, 0, kNone), 1);
    network.seal();
}

void buildHouses(Network& network, std::int32_t n) {
    for (std::int32_t house = 0; house < n / kHouseSize; ++house) {
        const auto roof = network.add(kRoof, house, kRoofBrand, 80.0F);
        const auto downpipe = network.add(kLink, house, kLinkBrand);
        const auto tank = network.add(kTank, house, kTankBrand, 3000.0F);
        const auto toilet = network.add(kToilet, house, kToiletBrand);
        const auto pump = network.add(kSupplyLink, house, kLinkBrand);
        const auto shower = network.add(kShower, house, kShowerBrand);
        const auto washer = network.add(kWasher, house, kWasherBrand);
        const auto mains = network.add(kJunction, house, kNone);
        const auto sewer = network.add(kMixer, house, kNone);
        const auto logger = network.add(kLogger, house, kNone);
        network.store(tank, 500.0F);
        network.connect(roof, 1, downpipe, 1);
        network.connect(downpipe, 1, tank, 1);
        network.connect(toilet, 2, pump, 1);
        network.connect(pump, 1, tank, 2);
        network.connect(tank, 1, mains, 1);
        network.connect(shower, 2, mains, 1);
        network.connect(washer, 2, mains, 1);
        network.connect(tank, 2, sewer, 1);
        network.connect(toilet, 1, sewer, 1);
        network.connect(shower, 1, sewer, 1);
        network.connect(washer, 1, sewer, 1);
        network.connect(sewer, 1, logger, 1);
    }
    network.seal();
}
