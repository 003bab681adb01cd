#include "networks.h"

using namespace code;

namespace {

constexpr std::int32_t kGroupSize = 10;

std::int32_t addHousehold(Network& network) {
    const std::int32_t group = network.addGroup();
    network.giveHousehold(group);
    return group;
}

void addHouse(Network& network) {
    const auto house = addHousehold(network);
    const auto roof = network.add(kImperviousSurface, house, 80.0F);
    const auto downpipe = network.add(kGravityLink, house);
    const auto tank = network.add(kTank, house, 3000.0F);
    const auto toilet = network.add(kToilet, house);
    const auto pump = network.add(kSupplyLink, house);
    const auto shower = network.add(kShower, house);
    const auto washer = network.add(kWasher, house);
    const auto mains = network.add(kJunction, house);
    const auto sewer = network.add(kMixer, house);
    const auto logger = network.add(kLogger, house);
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

void addLoopHouse(Network& network) {
    const auto house = addHousehold(network);
    const auto shower = network.add(kShower, house);
    const auto washer = network.add(kWasher, house);
    const auto greywater = network.add(kMixer, house);
    const auto membrane = network.add(kMembrane, house);
    const auto tank = network.add(kTank, house, 150.0F);
    const auto pump = network.add(kSupplyLink, house);
    const auto back = network.add(kDelay, house, 1.0F);
    const auto mains = network.add(kJunction, house);
    const auto sewer = network.add(kMixer, house);
    const auto logger = network.add(kLogger, house);
    network.store(tank, 20.0F);
    network.connect(shower, 1, greywater, 1);
    network.connect(back, 1, greywater, 1);
    network.connect(greywater, 1, membrane, 1);
    network.connect(membrane, 1, tank, 1);
    network.connect(tank, 2, back, 1);
    network.connect(washer, 2, pump, 1);
    network.connect(pump, 1, tank, 2);
    network.connect(shower, 2, mains, 1);
    network.connect(tank, 1, mains, 1);
    network.connect(washer, 1, sewer, 1);
    network.connect(membrane, 2, sewer, 1);
    network.connect(sewer, 1, logger, 1);
}

void addReceivers(Network& network) {
    const auto group = network.addGroup();
    const auto demand = network.add(kDemandSource, group, 100.0F);
    const auto store = network.add(kServiceReservoir, group, 3000.0F);
    const auto first = network.add(kSplitter, group, 60.0F);
    const auto second = network.add(kSplitter, group, 50.0F);
    const auto smallStore = network.add(kServiceReservoir, group, 900.0F);
    const auto asked = network.add(kJunction, group);
    const auto works = network.add(kTreatmentPlant, group, 1.0F);
    const auto well = network.add(kWell, group, 1.0F);
    const auto roof = network.add(kImperviousSurface, group, 400.0F);
    const auto reservoir = network.add(kReservoir, group);
    network.give(&Network::demands, demand, [](std::int32_t k) { return k % 10 == 0 ? 1500.0F : 900.0F; });
    network.store(store, 2000.0F);
    network.store(smallStore, 600.0F);
    network.store(reservoir, 5e5F);
    for (const auto id : {store, smallStore, works, well, reservoir})
        network.storeQuality(id, 4.0F);
    network.balance(first, smallStore, 10.0F);
    network.balance(first, reservoir, -10.0F);
    network.connect(demand, 1, store, 1);
    network.connect(store, 1, first, 1);
    network.connect(first, 1, second, 1);
    network.connect(first, 2, asked, 1);
    network.connect(second, 1, smallStore, 1);
    network.connect(second, 2, asked, 1);
    network.connect(smallStore, 1, asked, 1);
    network.connect(asked, 1, works, 1);
    network.connect(works, 1, reservoir, 2);
    network.connect(works, 2, well, 1);
    network.connect(roof, 1, reservoir, 1);
}

void repeat(Network& network, std::int32_t n, void (*add)(Network&)) {
    for (std::int32_t i = 0; i < n / kGroupSize; ++i)
        add(network);
    network.seal();
}

}  // namespace

void buildChain(Network& network, std::int32_t n) {
    const auto group = network.addGroup();
    std::int32_t before = network.add(kImperviousSurface, group, 80.0F);
    for (std::int32_t i = 2; i < n; ++i) {
        const std::int32_t link = network.add(kGravityLink, group);
        network.connect(before, 1, link, 1);
        before = link;
    }
    network.connect(before, 1, network.add(kLogger, group), 1);
    network.seal();
}

void buildHouses(Network& network, std::int32_t n) {
    repeat(network, n, addHouse);
}

void buildLoops(Network& network, std::int32_t n) {
    repeat(network, n, addLoopHouse);
}

void buildReceivers(Network& network, std::int32_t n) {
    network.traceSources();
    repeat(network, n, addReceivers);
}
