#include "networks.h"

#include <initializer_list>

#include "components/type_codes.h"

namespace {

constexpr float kBrand = 1.0F;
constexpr std::int32_t kGroup = 1;

std::int32_t add(Model& model, std::int32_t type, float size = 1.0F) {
    const std::int32_t id = 1 + static_cast<std::int32_t>(model.components.size());
    model.components.push_back(
        {static_cast<float>(id), static_cast<float>(type), static_cast<float>(kGroup), kBrand, size});
    return id;
}

void connect(Model& model, std::int32_t sender, std::int32_t port, std::int32_t receiver,
             std::int32_t receiverPort = 1) {
    model.connections.push_back({0, sender, port, receiver, receiverPort});
}

void addSeries(Model& model, Table table, std::int32_t id, float value, std::size_t perStep = 1) {
    model.table(table).push_back({id, std::vector<float>(static_cast<std::size_t>(model.nSteps) * perStep, value)});
}

void addAllSpecifications(Model& model, float value) {
    for (int number = 1; number <= 63; ++number)
        addSpecification(model, kBrand, number, value);
}

}  // namespace

Model makeEverything() {
    Model model;
    model.nSteps = 5;
    model.BuildTree = 1;
    model.pots = {kGroup, 2};
    addAllSpecifications(model, 0.5F);

    const std::int32_t roof = add(model, code::kImperviousSurface);
    const std::int32_t junction = add(model, code::kJunction);
    const std::int32_t delay = add(model, code::kDelay);
    const std::int32_t multiplier1 = add(model, code::kMultiplier);
    const std::int32_t multiplier2 = add(model, code::kMultiplier);
    const std::int32_t logger = add(model, code::kLogger);
    connect(model, roof, 1, junction);
    connect(model, junction, 1, multiplier1);
    connect(model, junction, 1, delay);
    connect(model, delay, 1, junction, 2);
    connect(model, multiplier1, 1, multiplier2);
    connect(model, multiplier2, 1, logger);

    const std::int32_t roof2 = add(model, code::kImperviousSurface);
    const std::int32_t multiplier3 = add(model, code::kMultiplier);
    const std::int32_t limiter = add(model, code::kQuotaLimiter);
    const std::int32_t river = add(model, code::kWaterBody);
    connect(model, roof2, 1, multiplier3);
    connect(model, multiplier3, 1, limiter);
    connect(model, limiter, 1, river);

    const std::int32_t demand = add(model, code::kDemandSource, 100.0F);
    const std::int32_t store = add(model, code::kServiceReservoir, 50.0F);
    const std::int32_t splitter = add(model, code::kSplitter, 40.0F);
    connect(model, demand, 1, store);
    connect(model, store, 1, splitter);
    for (const std::int32_t port : {1, 2}) {
        const std::int32_t works = add(model, code::kTreatmentPlant);
        connect(model, splitter, port, works);
        connect(model, works, 1, add(model, code::kWell));
    }
    model.splits.push_back({splitter, {store}, 1.0F});

    addSeries(model, Table::Rainfall, kGroup, 3.0F);
    for (const ComponentRow& row : model.components) {
        for (const Table table : {Table::Multpls, Table::InsDmd, Table::WatQuant, Table::WatQual})
            addSeries(model, table, idOf(row), 2.0F);
    }
    return model;
}

Model makeDaily(std::int32_t steps) {
    Model model;
    model.nSteps = steps;
    model.Latitude = 45.0F;
    model.pots = {kGroup};
    addAllSpecifications(model, 0.5F);
    addSeries(model, Table::Rainfall, kGroup, 3.0F);
    addSeries(model, Table::Temp, kGroup, 12.0F);
    addSeries(model, Table::Tmin, kGroup, 8.0F);
    addSeries(model, Table::Tmax, kGroup, 16.0F);

    const std::int32_t roof = add(model, code::kImperviousSurface, 100.0F);
    const std::int32_t limiter = add(model, code::kQuotaLimiter);
    const std::int32_t logger = add(model, code::kLogger);
    connect(model, roof, 1, limiter);
    connect(model, limiter, 2, logger);
    add(model, code::kSolarPanel, 10.0F);
    for (const std::int32_t type : {code::kGreenArea, code::kSoilStore}) {
        const std::int32_t surface = add(model, type, 20.0F);
        connect(model, surface, 1, add(model, code::kWaterBody));
        addSeries(model, Table::WatQuant, surface, 0.0F);
    }
    return model;
}

Model makeHouses(int houses, std::int32_t steps) {
    Model model;
    model.nSteps = steps;
    model.pots = {kGroup};
    addAllSpecifications(model, 0.5F);
    addSeries(model, Table::Rainfall, kGroup, 3.0F);
    addSeries(model, Table::Occup, kGroup, 2.0F);
    addSeries(model, Table::Dmdflct, kGroup, 1.0F);
    addSeries(model, Table::FreqSer, kGroup, 4.0F, kAppliances);
    for (int house = 0; house < houses; ++house) {
        const std::int32_t roof = add(model, code::kImperviousSurface, 100.0F);
        const std::int32_t toilet = add(model, 1);
        const std::int32_t tank = add(model, code::kTank, 1000.0F);
        const std::int32_t sewer = add(model, code::kGravityLink);
        const std::int32_t logger = add(model, code::kLogger);
        connect(model, roof, 1, tank, 1);
        connect(model, toilet, 2, tank, 2);
        connect(model, toilet, 1, sewer);
        connect(model, tank, 2, logger);
        addSeries(model, Table::WatQuant, tank, 0.0F);
    }
    return model;
}
