// A city of quarters of 100 components, each with every family of models in it; every type occurs at least once in 1200
// components, since some take turns from quarter to quarter.
//
//   36   4 houses with no tank: 4 appliances each
//   30   2 houses with a rainwater tank: 7 appliances each
//   13   water supply: the street's junction, service reservoir, splitter, treatment plant, well, two reservoirs with
//        pumped storage between them, hydropower, catchment and river, a demand put in
//    9   sewage: the street's mixer, delay, membrane, connector, a store, quota, pump ...
//    7   storm water: the street's mixer, green area, soil, soak-away, detention basin, threshold, logger
//    5   abstraction, potable treatment or treatment line; two multipliers; solar panel or net radiation; wind turbine

#include <array>

#include "networks.h"

using namespace code;

namespace {

constexpr std::int32_t kQuarterSize = 100;

class Quarter {
  public:
    Quarter(Network& network, std::int32_t number) : network_(network), number_(number), works_(network.addGroup()) {
        network_.giveWeather(works_);
    }

    void build() {
        supply_ = add(kJunction);
        sewer_ = add(kMixer);
        storm_ = add(kMixer);
        addHouse(scaled(sewer_), scaled(supply_));
        for (int i = 0; i < 3; ++i)
            addHouse(sewer_, supply_);
        for (int i = 0; i < 2; ++i)
            addRainHouse();
        addSupply();
        addSewage();
        addStorm();
        add(pick<2>({kSolarPanel, kNetRadiation}), 30.0F);
        add(kWindTurbine, 1.0F);
    }

  private:
    std::int32_t add(Type type, float size = 0.0F) { return network_.add(type, works_, size); }

    // The types that take turns.
    template <std::size_t count>
    Type pick(std::array<Type, count> types) const {
        return types[static_cast<std::size_t>(number_) % count];
    }

    void join(std::int32_t sender, std::int32_t receiver) { network_.connect(sender, 1, receiver, 1); }

    // Brings a house's flow to the street as that of several.
    std::int32_t scaled(std::int32_t street) {
        const auto multiplier = add(kMultiplier);
        network_.give(&Network::multipliers, multiplier, [](std::int32_t k) { return k % 365 < 200 ? 3.0F : 2.5F; });
        join(multiplier, street);
        return multiplier;
    }

    void addHouse(std::int32_t sewer, std::int32_t supply) {
        const auto house = network_.addGroup();
        network_.giveHousehold(house);
        const auto mains = network_.add(kJunction, house);
        const auto waste = network_.add(kMixer, house);
        const auto service = network_.add(kSupplyLink, house);
        const auto drain = network_.add(kSewerLink, house);
        for (const Type type : {kToilet, kShower, kWasher, kKitchenTap}) {
            const auto appliance = network_.add(type, house);
            join(appliance, waste);
            network_.connect(appliance, 2, mains, 1);
        }
        join(network_.add(kImperviousSurface, house, 80.0F), storm_);
        join(waste, drain);
        join(drain, sewer);
        join(mains, service);
        join(service, supply);
    }

    void addRainHouse() {
        const auto house = network_.addGroup();
        network_.giveHousehold(house);
        const auto mains = network_.add(kJunction, house);
        const auto waste = network_.add(kMixer, house);
        const auto drain = network_.add(kDrainageLink, house);
        const auto roof = network_.add(kImperviousSurface, house, 60.0F);
        const auto downpipe = network_.add(kGravityLink, house);
        const auto tank = network_.add(kTank, house, 2000.0F);
        const auto pump = network_.add(kSupplyLink, house);
        const auto overflow = network_.add(kInfiltrationLink, house);
        network_.store(tank, 500.0F);
        for (const Type type : {kToilet, kShower, kDishwasher, kBasin, kBath, kOutdoorUse, kIndependentUse}) {
            const auto appliance = network_.add(type, house);
            join(appliance, waste);
            network_.connect(appliance, 2, type == kOutdoorUse ? pump : mains, 1);
        }
        join(roof, downpipe);
        join(downpipe, tank);
        network_.connect(pump, 1, tank, 2);
        join(tank, mains);
        network_.connect(tank, 2, overflow, 1);
        join(overflow, storm_);
        join(waste, drain);
        join(drain, sewer_);
        join(mains, supply_);
    }

    // What the street asks for comes from a service reservoir that two reservoirs and a well refill. Pumped
    // storage between the reservoirs drives a turbine.
    void addSupply() {
        const auto industry = add(kDemandSource, 50.0F);
        const auto store = add(kServiceReservoir, 6000.0F);
        const auto splitter = add(kSplitter, 50.0F);
        const auto plant = add(kTreatmentPlant, 1.0F);
        const auto well = add(kWell, 1.0F);
        const auto drawn = add(kJunction);
        const auto catchment = add(kPerviousSurface, 800.0F);
        const auto high = add(kReservoir);
        const auto low = network_.add(kReservoir, works_, 0.0F, kLowReservoir);
        const auto pumped = add(kPumpedStorage);
        const auto turbine = add(kHydropower, 1.0F);
        const auto river = add(kWaterBody);
        network_.give(&Network::demands, industry, [](std::int32_t k) { return k % 7 < 5 ? 900.0F : 300.0F; });
        network_.give(&Network::demands, pumped, [](std::int32_t k) { return k % 2 == 0 ? 0.02F : 0.04F; });
        network_.store(store, 4000.0F);
        network_.storeQuality(store, 4.0F);
        network_.storeQuality(plant, 4.0F);
        network_.store(catchment, 2.0F);
        network_.store(high, 9e5F);
        network_.storeQuality(high, 8.0F);
        network_.store(low, 2e5F);
        network_.storeQuality(low, 6.0F);
        network_.balance(splitter, high, 20.0F);
        network_.balance(splitter, low, -20.0F);
        join(industry, supply_);
        join(works(kPotableTreatment, supply_), store);
        join(store, splitter);
        join(splitter, plant);
        network_.connect(splitter, 2, well, 1);
        join(plant, drawn);
        network_.connect(pumped, 2, drawn, 1);
        network_.connect(drawn, 1, high, 2);
        join(catchment, high);
        network_.connect(well, 1, low, 2);
        join(pumped, turbine);
        join(turbine, low);
        network_.connect(high, 2, river, 1);
    }

    // One of three types of works stands behind the supply or the sewer.
    std::int32_t works(Type behind, std::int32_t sender) {
        const Type type = pick<3>({kAbstraction, kTreatmentLine, kPotableTreatment});
        const bool isSewage = type == kTreatmentLine;
        if (isSewage != (behind == kTreatmentLine)) return sender;
        const auto works = add(type, 1.0F);
        join(sender, works);
        return works;
    }

    // Reclaims a part of the sewage, as much as its use is allowed.
    void addSewage() {
        const auto delay = add(kDelay, 2.0F);
        const auto membrane = add(kMembrane);
        const auto twofold = add(kConnector);
        const Type type = pick<4>({kLocalTreatment, kRainwaterTreatment, kGreywaterTreatment, kWastewaterTreatment});
        const auto store = add(type, 2000.0F);
        const auto quota = add(kQuotaLimiter);
        const auto pump = add(kPump, 1.0F);
        const auto quality = add(pick<3>({kQualityFromReservoir, kQualitySetter, kQualitySwitch}), 7.0F);
        const auto logger = add(kLogger);
        if (type != kWastewaterTreatment) network_.store(store, 700.0F);
        network_.give(&Network::demands, quality, [](std::int32_t) { return 2.0F; });
        join(sewer_, delay);
        join(works(kTreatmentLine, delay), membrane);
        join(membrane, twofold);
        join(twofold, store);
        network_.connect(twofold, 2, logger, 1);
        join(store, quota);
        join(quota, pump);
        join(pump, quality);
    }

    void addStorm() {
        const auto greenArea = add(kGreenArea, 60.0F);
        const auto soil = add(kSoilStore);
        const auto soakaway = add(kSoakaway, 8.0F);
        const auto basin = add(kDetentionBasin, 60.0F);
        const auto threshold = add(pick<2>({kThresholdDivider, kThresholdSwitch}), 10.0F);
        const auto logger = add(kLogger);
        network_.give(&Network::thresholds, threshold, [](std::int32_t k) { return k % 60 < 50 ? -20.0F : 300.0F; });
        for (const auto& [store, quantity] :
             {std::pair{greenArea, 10.0F}, {soil, 60.0F}, {soakaway, 1.0F}, {basin, 2.0F}})
            network_.store(store, quantity);
        join(greenArea, storm_);
        join(soil, soakaway);
        join(soakaway, storm_);
        join(storm_, basin);
        join(basin, threshold);
        join(threshold, logger);
    }

    Network& network_;
    std::int32_t number_;
    std::int32_t works_;
    std::int32_t supply_ = 0;
    std::int32_t sewer_ = 0;
    std::int32_t storm_ = 0;
};

void addQuarters(Network& network, std::int32_t n) {
    network.traceSources();
    for (std::int32_t number = 0; number < n / kQuarterSize; ++number)
        Quarter(network, number).build();
}

}  // namespace

void buildCity(Network& network, std::int32_t n) {
    addQuarters(network, n);
    network.seal();
}

void buildCityByType(Network& network, std::int32_t n) {
    addQuarters(network, n);
    network.sortByType();
    network.seal();
}
