#include "network.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

namespace {

constexpr std::int32_t kFirstKey = 2000001;
constexpr int kKeys = 2;

struct Kind {
    int code;
    int inputs;
    int outputs;  // ports that the type sets
};

// Everything but types that need a linked store (quality switch, release between stores) and recorders.
constexpr Kind kKinds[] = {
    {1, 0, 2},  {9, 0, 2},  {10, 0, 2}, {3, 1, 2},  {11, 1, 1}, {22, 1, 1}, {23, 1, 2}, {24, 1, 2}, {25, 1, 1},
    {27, 1, 1}, {28, 0, 1}, {29, 0, 1}, {30, 2, 1}, {31, 2, 1}, {32, 2, 2}, {33, 1, 1}, {34, 1, 1}, {35, 1, 1},
    {36, 1, 2}, {37, 1, 2}, {38, 1, 1}, {39, 2, 2}, {40, 1, 2}, {41, 1, 1}, {42, 1, 1}, {44, 1, 1}, {45, 0, 1},
    {46, 0, 2}, {47, 1, 2}, {48, 1, 2}, {49, 1, 2}, {50, 1, 1}, {52, 1, 2}, {53, 1, 2}, {55, 1, 1}, {56, 1, 1},
    {58, 1, 2}, {62, 0, 1}, {63, 1, 2}, {51, 1, 1}, {64, 1, 2}, {59, 0, 0}, {60, 0, 0}, {61, 0, 0},
};
constexpr std::size_t kPlain = std::size(kKinds) - 5;  // without delays, quotas and the energy units at the end

class Maker {
  public:
    Maker(NetworkOptions options, const Dice& dice) : options_(options), dice_(dice) {}

    Model make() {
        model_.nSteps = dice_(1, options_.mostSteps + 1);
        model_.Latitude = pick(-8 * 60, 8 * 60);
        model_.StartTime = 86400 * dice_(0, 20000);
        model_.BuildTree = options_.tree ? dice_(0, 2) : 0;
        for (int k = 0; k < kKeys; ++k)
            addGroup(kFirstKey + k);
        // The first two components set all that the driver keeps from one step to the next.
        addComponent({28, 0, 1});
        addComponent({52, 1, 2});
        connect(0, 1, 1, 1);
        const int more = dice_(1, options_.mostComponents + 1);
        for (int i = 0; i < more; ++i)
            addFed();
        closeSplitters();
        record();
        // In any order of the table, but for the first two.
        for (std::size_t i = model_.components.size(); i > 3; --i)
            std::swap(model_.components[i - 1], model_.components[2 + index(i - 2)]);
        return model_;
    }

  private:
    std::size_t index(std::size_t count) { return static_cast<std::size_t>(dice_(0, static_cast<int>(count))); }

    float pick(int low, int high) { return static_cast<float>(dice_(low, high + 1)) / 8.0F; }

    std::vector<float> picks(int count, int low, int high) {
        std::vector<float> values;
        for (int i = 0; i < count; ++i)
            values.push_back(pick(low, high));
        return values;
    }

    void addGroup(std::int32_t key) {
        const int n = model_.nSteps;
        model_.pots.push_back(key);
        const auto add = [&](Table table, std::vector<float> values) {
            model_.table(table).push_back({key, std::move(values)});
        };
        add(Table::FreqSer, picks(n * kAppliances, 0, 40));
        add(Table::Rainfall, picks(n, 0, 160));
        add(Table::Temp, picks(n, 0, 200));
        add(Table::Tmin, picks(n, -40, 100));
        add(Table::Tmax, picks(n, 100, 300));
        add(Table::Wind, picks(n, 0, 200));
        add(Table::Occup, picks(n, 0, 40));
        add(Table::Dmdflct, picks(n, 0, 16));
    }

    std::size_t addComponent(Kind kind) {
        const std::size_t at = model_.components.size();
        const auto id = kFirstId + static_cast<std::int32_t>(at);
        const auto key = static_cast<float>(std::array{0, kFirstKey, kFirstKey + 1}[index(3)]);
        // Without a group there is no weather to read.
        const bool reads = kind.inputs == 0;
        const float size = kind.code == 51 ? static_cast<float>(dice_(0, 4)) : pick(0, 400);
        model_.components.push_back({static_cast<float>(id), static_cast<float>(kind.code),
                                     reads && key == 0.0F ? static_cast<float>(kFirstKey) : key,
                                     static_cast<float>(at + 1), size});
        kinds_.push_back(kind);
        std::vector<std::pair<int, float>> specifications;
        for (int number = 1; number <= 63; ++number)
            specifications.emplace_back(number, number == 1 || number > 60 ? pick(1, 160) : pick(0, 8));
        addBrand(model_, static_cast<float>(at + 1), specifications);
        const int n = model_.nSteps;
        model_.table(Table::WatQuant).push_back({id, picks(n, 0, 160)});
        model_.table(Table::WatQual).push_back({id, picks(n, 0, 160)});
        model_.table(Table::InsDmd).push_back({id, picks(n, 0, 160)});
        model_.table(Table::Threshold).push_back({id, picks(n, -400, 400)});
        if (kind.code == 34) model_.table(Table::Multpls).push_back({id, picks(n, 0, 16)});
        if (kind.code == 36) addSplits(id);
        return at;
    }

    void addSplits(std::int32_t id) {
        const int groups = dice_(0, 3);
        for (int g = 0; g < groups; ++g) {
            const auto member = kFirstId + dice_(0, static_cast<int>(model_.components.size()));
            model_.splits.push_back({id, {member}, pick(-400, 400)});
        }
    }

    void connect(std::size_t sender, int senderPort, std::size_t receiver, int receiverPort) {
        const auto link = static_cast<std::int32_t>(model_.connections.size()) + 1;
        model_.connections.push_back({link, kFirstId + static_cast<std::int32_t>(sender), senderPort,
                                      kFirstId + static_cast<std::int32_t>(receiver), receiverPort});
    }

    // A component with its inputs from components before it, each from another one.
    void addFed() {
        std::size_t choices = kPlain;
        if (options_.delays) choices += 2;
        Kind kind = kKinds[index(choices)];
        if (options_.radiation && dice_(0, 8) == 0) kind = kKinds[std::size(kKinds) - 3 + index(3)];
        std::vector<std::size_t> senders;
        for (std::size_t i = 0; i < kinds_.size(); ++i)
            if (kinds_[i].outputs > 0) senders.push_back(i);
        const std::size_t at = addComponent(kind);
        for (int port = 1; port <= kind.inputs; ++port) {
            const auto chosen = index(senders.size());
            const std::size_t sender = senders[chosen];
            senders.erase(senders.begin() + static_cast<std::ptrdiff_t>(chosen));
            connect(sender, dice_(1, kinds_[sender].outputs + 1), at, port);
            if (senders.empty() && port < kind.inputs) {
                // Too few components yet: a fresh surface feeds the second input.
                connect(addComponent({28, 0, 1}), 1, at, port + 1);
                break;
            }
        }
    }

    // A splitter at the end of a traced path is an internal error.
    void closeSplitters() {
        std::set<std::int32_t> sending;
        for (const ConnectionRow& row : model_.connections)
            sending.insert(row.senderId);
        const std::size_t count = kinds_.size();
        for (std::size_t i = 0; i < count; ++i)
            if (kinds_[i].code == 36 && !sending.contains(kFirstId + static_cast<std::int32_t>(i)))
                connect(i, 2, addComponent({30, 0, 1}), 1);
    }

    // Loggers on some outputs, last in the tables.
    void record() {
        const std::size_t count = kinds_.size();
        for (std::size_t i = 0; i < count; ++i) {
            for (int port = 1; port <= kinds_[i].outputs; ++port) {
                if (dice_(0, 3) == 0) continue;
                // A second connection between the tree's nodes would cut its paths.
                if (model_.BuildTree != 0 && sends(i, port)) continue;
                connect(i, port, addComponent({26, 1, 0}), 1);
            }
        }
    }

    bool sends(std::size_t sender, int port) const {
        const auto id = kFirstId + static_cast<std::int32_t>(sender);
        return std::any_of(model_.connections.begin(), model_.connections.end(),
                           [&](const ConnectionRow& row) { return row.senderId == id && row.senderPort == port; });
    }

    NetworkOptions options_;
    const Dice& dice_;
    Model model_;
    std::vector<Kind> kinds_;
};

}  // namespace

Model makeNetwork(NetworkOptions options, const Dice& dice) {
    return Maker(options, dice).make();
}

void addBrand(Model& model, float brand, const std::vector<std::pair<int, float>>& values) {
    for (const auto& [number, value] : values)
        model.specifications.push_back({0, 0, brand, 0, 1, 1, static_cast<float>(number), value, 0});
}

std::int32_t idOf(const ComponentRow& row) {
    return static_cast<std::int32_t>(std::lround(row.id));
}

std::vector<std::size_t> orderOf(const Model& model) {
    std::vector<std::size_t> order;
    std::set<std::int32_t> placed;
    const auto ready = [&](std::int32_t id) {
        return std::all_of(model.connections.begin(), model.connections.end(), [&](const ConnectionRow& row) {
            return row.receiverId != id || placed.contains(row.senderId);
        });
    };
    for (bool any = true; any;) {
        any = false;
        for (std::size_t i = 0; i < model.components.size(); ++i) {
            const std::int32_t id = idOf(model.components[i]);
            if (placed.contains(id) || !ready(id)) continue;
            placed.insert(id);
            order.push_back(i);
            any = true;
        }
    }
    return order;
}
