// Networks of one type, in groups of 20 components with potentials of their own: what feeds them, and as many of the
// type as there is room for.

#include <algorithm>
#include <array>

#include "networks.h"

using namespace code;

namespace {

constexpr int kGroupSize = 20;

constexpr auto kWithReservoirs =
    std::array{kSplitter, kHydropower, kQualityFromReservoir, kPumpedStorage, kQualitySwitch};
constexpr auto kFromRain =
    std::array{kSoakaway,  kRainwaterTreatment, kLogger, kGravityLink,    kSewerLink,     kDrainageLink,
               kWaterBody, kHydropower,         kDelay,  kDetentionBasin, kQualitySetter, kInfiltrationLink};
constexpr auto kWithoutInput =
    std::array{kToilet,    kShower,        kWasher,         kDishwasher,        kKitchenTap,      kBasin,
               kBath,      kOutdoorUse,    kIndependentUse, kImperviousSurface, kPerviousSurface, kDemandSource,
               kGreenArea, kPumpedStorage, kSolarPanel,     kNetRadiation,      kWindTurbine,     kSoilStore};

bool contains(const auto& types, Type type) {
    return std::find(types.begin(), types.end(), type) != types.end();
}

class Group {
  public:
    Group(Network& network, Type type) : network_(network), type_(type), group_(network.addGroup()) {
        network_.giveHousehold(group_);
        network_.giveWeather(group_);
        rain_ = add(kImperviousSurface, 100.0F);
        demand_ = add(kDemandSource, 100.0F);
        network_.give(&Network::demands, demand_, [](std::int32_t k) { return k % 7 == 0 ? 400.0F : 200.0F; });
    }

    void build() {
        if (contains(kWithReservoirs, type_)) {
            high_ = addReservoir(kReservoir);
            low_ = addReservoir(kLowReservoir);
        }
        if (type_ == kServiceReservoir || type_ == kTreatmentPlant) addSource();
        while (count_ < kGroupSize)
            addOne();
    }

  private:
    std::int32_t add(Type type, float size = 0.0F) {
        ++count_;
        return network_.add(type, group_, size);
    }

    std::int32_t addReservoir(Brand brand) {
        ++count_;
        const auto id = network_.add(kReservoir, group_, 0.0F, brand);
        network_.store(id, 2e5F);
        network_.storeQuality(id, 6.0F);
        network_.connect(rain_, 1, id, 1);
        network_.connect(demand_, 1, id, 2);
        return id;
    }

    // What all ask together comes from one source.
    void addSource() {
        asked_ = add(kJunction);
        const auto source = add(type_ == kServiceReservoir ? kTreatmentPlant : kReservoir);
        network_.storeQuality(source, 6.0F);
        if (type_ == kServiceReservoir) {
            network_.connect(asked_, 1, source, 1);
            return;
        }
        network_.store(source, 5e5F);
        network_.connect(rain_, 1, source, 1);
        network_.connect(asked_, 1, source, 2);
    }

    void addOne() {
        const float size = type_ == kDelay ? 2.0F : type_ == kServiceReservoir ? 3000.0F : 50.0F;
        const auto id = add(type_, size);
        connect(id);
        giveSeries(id);
        if (type_ != kSplitter) return;
        network_.balance(id, high_, 20.0F);
        network_.balance(id, low_, -20.0F);
    }

    void connect(std::int32_t id) {
        if (contains(kWithoutInput, type_)) return;
        const bool isSum = type_ == kJunction || type_ == kMixer;
        const bool isTwofold = isSum || type_ == kTank || type_ == kReservoir;
        network_.connect(isTwofold || contains(kFromRain, type_) ? rain_ : demand_, 1, id, 1);
        if (isTwofold) network_.connect(demand_, 1, id, isSum ? 1 : 2);
        if (asked_ != 0) network_.connect(id, 1, asked_, 1);
    }

    void giveSeries(std::int32_t id) {
        const auto oneOf = [&](auto... types) { return ((type_ == types) || ...); };
        if (oneOf(kPerviousSurface, kTank, kServiceReservoir, kReservoir, kSoakaway, kLocalTreatment,
                  kRainwaterTreatment, kGreywaterTreatment, kDetentionBasin, kGreenArea, kSoilStore))
            network_.store(id, 10.0F);
        if (oneOf(kServiceReservoir, kTreatmentPlant, kReservoir)) network_.storeQuality(id, 5.0F);
        if (oneOf(kDemandSource, kQualitySetter))
            network_.give(&Network::demands, id, [](std::int32_t) { return 9.0F; });
        if (oneOf(kPumpedStorage)) network_.give(&Network::demands, id, [](std::int32_t) { return 0.01F; });
        if (oneOf(kMultiplier)) network_.give(&Network::multipliers, id, [](std::int32_t) { return 2.0F; });
        if (oneOf(kThresholdDivider, kThresholdSwitch))
            network_.give(&Network::thresholds, id, [](std::int32_t k) { return k % 60 < 50 ? -20.0F : 300.0F; });
    }

    Network& network_;
    Type type_;
    std::int32_t group_;
    std::int32_t rain_ = 0;
    std::int32_t demand_ = 0;
    std::int32_t high_ = 0;
    std::int32_t low_ = 0;
    std::int32_t asked_ = 0;
    int count_ = 0;
};

}  // namespace

void buildOneType(Network& network, std::int32_t n, Type type) {
    if (type == kServiceReservoir || type == kTreatmentPlant) network.traceSources();
    for (std::int32_t i = 0; i < n / kGroupSize; ++i)
        Group(network, type).build();
    network.seal();
}
