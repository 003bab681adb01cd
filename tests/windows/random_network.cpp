#include "random_network.h"

#include <algorithm>
#include <random>
#include <set>
#include <utility>

namespace {

constexpr std::int32_t kGroups = 3;  // ids 1 ... 3
constexpr std::int32_t kBrands = 4;
constexpr std::int32_t kSpecifications = 63;
constexpr std::int32_t kFirstId = 1001;  // all ids with as many digits

constexpr std::int32_t kJunction = 30;
constexpr std::int32_t kMixer = 31;
constexpr std::int32_t kReservoir = 39;
constexpr std::int32_t kSplitter = 36;
constexpr std::int32_t kDelay = 51;
constexpr std::int32_t kLogger = 26;
constexpr std::int32_t kSources[] = {1, 2, 4, 5, 6, 7, 8, 9, 10, 28, 29, 45, 46, 59, 60, 61, 62};
constexpr std::int32_t kOneInput[] = {3,  11, 22, 23, 24, 25, 27, 33, 34, 35, 36, 37, 38, 40, 41, 42,
                                      43, 44, 47, 48, 49, 50, 51, 52, 53, 55, 56, 58, 63, 64, 30, 31};
constexpr std::int32_t kTwoInputs[] = {32, 39};
constexpr std::int32_t kWithReservoirs[] = {54, 57};  // release and extraction: the reservoirs of their group feed them

struct Port {
    std::int32_t id;
    std::int32_t number;
};

class Builder {
  public:
    explicit Builder(std::uint32_t seed) : random_(seed) {}

    NetworkCall build() {
        settings();
        components();
        loops();
        loggers();
        std::shuffle(model_.connections.begin(), model_.connections.end(), random_);
        shuffleComponents();
        specifications();
        series();
        splits();
        return std::move(call_);
    }

  private:
    std::size_t below(std::size_t n) { return random_() % n; }
    std::int32_t below(std::int32_t n) { return static_cast<std::int32_t>(below(static_cast<std::size_t>(n))); }
    bool chance(std::size_t percent) { return below(std::size_t{100}) < percent; }
    // 0 ... 1, the same float everywhere
    float unit() { return static_cast<float>(random_() >> 8U) / 16777216.0F; }
    float between(float low, float high) { return low + (high - low) * unit(); }
    template <class T, std::size_t N>
    T pick(const T (&values)[N]) {
        return values[below(N)];
    }

    void settings() {
        model_.nSteps = 1 + below(40);
        model_.StartTime = below(2147480000);
        model_.Latitude = between(-70.0F, 70.0F);
        model_.StopOnInfeas = chance(3) ? 1 : 0;
        model_.BuildTree = chance(50) ? 1 : 0;
        call_.first = 1;
        call_.last = model_.nSteps;
        if (chance(20)) call_.first += below(model_.nSteps);
        if (chance(20)) call_.last = call_.first + below(model_.nSteps - call_.first + 1);
    }

    std::int32_t add(std::int32_t type, std::int32_t key) {
        const std::int32_t id = kFirstId + static_cast<std::int32_t>(model_.components.size());
        const float size = type == 50 ? static_cast<float>(below(4)) : between(0.0F, 50.0F);
        model_.components.push_back({static_cast<float>(id), static_cast<float>(type), static_cast<float>(key),
                                     static_cast<float>(1 + below(kBrands)), size});
        outputs_.push_back({id, 1});
        outputs_.push_back({id, 2});
        return id;
    }

    // From an output that is placed before the receiver; one matrix cell carries one connection.
    void feed(std::int32_t receiver, std::int32_t port, std::size_t outputs) {
        for (int tries = 0; tries < 50; ++tries) {
            const Port from = outputs_[below(outputs)];
            if (cells_.insert({from.id, receiver}).second) return connect(from, receiver, port);
        }
    }

    void connect(Port from, std::int32_t receiver, std::int32_t port) {
        model_.connections.push_back(
            {static_cast<std::int32_t>(model_.connections.size()), from.id, from.number, receiver, port});
    }

    void components() {
        const bool reservoirs = chance(50);
        for (std::int32_t i = 0; i < 3; ++i)
            add(pick(kSources), group());
        if (reservoirs)
            for (int i = 0; i < 2; ++i)
                receive(kReservoir, 1, 2);
        for (std::int32_t i = 3 + below(30); i > 0; --i)
            component(reservoirs);
    }

    std::int32_t group() { return 1 + below(kGroups); }
    // Mostly a group, sometimes none at all.
    std::int32_t key() { return chance(95) ? group() : 0; }

    void component(bool reservoirs) {
        const std::size_t kind = below(std::size_t{100});
        if (kind < 25) {
            add(pick(kSources), group());
        } else if (kind < 35) {
            receive(pick(kTwoInputs), key(), 2);
        } else if (kind < 40 && reservoirs) {
            const std::int32_t type = pick(kWithReservoirs);
            receive(type, 1, type == 57 ? 1 : 0);
        } else {
            const std::int32_t type = pick(kOneInput);
            const bool collects = type == kJunction || type == kMixer;
            receive(type, group(), collects ? 1 + below(4) : 1);
        }
    }

    void receive(std::int32_t type, std::int32_t key, std::int32_t inputs) {
        const std::size_t before = outputs_.size();
        const std::int32_t id = add(type, key);
        for (std::int32_t port = 1; port <= inputs; ++port)
            feed(id, inputs > 2 ? 1 : port, before);
        if (type == kSplitter) splitters_.push_back(id);
    }

    // A delay that hears what comes after it: a junction before it takes its signal of the step before.
    void loops() {
        for (std::int32_t n = below(3); n > 0; --n) {
            std::vector<std::int32_t> junctions;
            for (const ComponentRow& row : model_.components)
                if (row.techid == static_cast<float>(kJunction)) junctions.push_back(static_cast<std::int32_t>(row.id));
            if (junctions.empty()) return;
            const std::size_t before = outputs_.size();
            const std::int32_t delay = add(kDelay, key());
            feed(delay, 1, before);
            connect({delay, 1}, junctions[below(junctions.size())], 1);
        }
    }

    void loggers() {
        const std::size_t n = outputs_.size();
        for (std::size_t i = 0; i < n; ++i) {
            if (!chance(50)) continue;
            const Port from = outputs_[i];
            connect(from, add(kLogger, 0), 1);
        }
    }

    void shuffleComponents() {
        if (chance(50)) std::shuffle(model_.components.begin(), model_.components.end(), random_);
    }

    // Every number for every brand: shares, small and large values, in the ascending order that every model wants.
    void specifications() {
        for (std::int32_t brand = 1; brand <= kBrands; ++brand)
            for (std::int32_t number = 1; number <= kSpecifications; ++number) {
                const float value = chance(60) ? unit() : chance(90) ? between(0.0F, 40.0F) : 0.0F;
                model_.specifications.push_back(
                    {0.0F, 0.0F, static_cast<float>(brand), 0.0F, 1.0F, 1.0F, static_cast<float>(number), value, 0.0F});
            }
    }

    std::vector<float> values(std::size_t n, float low, float high) {
        std::vector<float> series(n);
        for (float& value : series)
            value = between(low, high);
        return series;
    }

    void series() {
        std::vector<std::int32_t> ids;
        for (std::int32_t group = 1; group <= kGroups; ++group)
            ids.push_back(group);
        for (const ComponentRow& row : model_.components)
            ids.push_back(static_cast<std::int32_t>(row.id));
        model_.pots = ids;
        for (const std::int32_t id : ids)
            seriesOf(id);
        for (const ComponentRow& row : model_.components)
            if (row.techid == 34.0F || row.techid == static_cast<float>(kJunction)) multiply(row);
    }

    void seriesOf(std::int32_t id) {
        const auto n = static_cast<std::size_t>(model_.nSteps);
        put(Table::FreqSer, id, values(n * kAppliances, 0.0F, 5.0F));
        std::vector<float> rain = values(n, -20.0F, 30.0F);
        for (float& value : rain)
            value = std::max(value, 0.0F);
        put(Table::Rainfall, id, rain);
        const std::vector<float> low = values(n, -15.0F, 20.0F);
        std::vector<float> high = low;
        for (float& value : high)
            value += between(0.0F, 15.0F);
        put(Table::Tmin, id, low);
        put(Table::Tmax, id, high);
        put(Table::Temp, id, values(n, -10.0F, 35.0F));
        put(Table::Wind, id, values(n, 0.0F, 60.0F));
        put(Table::Threshold, id, values(n, -50.0F, 50.0F));
        put(Table::Occup, id, values(n, 0.0F, 6.0F));
        put(Table::Dmdflct, id, values(n, 0.5F, 1.5F));
        put(Table::InsDmd, id, values(n, 0.0F, 20.0F));
        put(Table::WatQuant, id, values(n, 0.0F, 40.0F));
        put(Table::WatQual, id, values(n, 0.0F, 100.0F));
    }

    void multiply(const ComponentRow& row) {
        put(Table::Multpls, static_cast<std::int32_t>(row.id),
            values(static_cast<std::size_t>(model_.nSteps), 0.0F, 3.0F));
    }

    void put(Table table, std::int32_t id, const std::vector<float>& given) {
        model_.table(table).push_back({id, given});
    }

    void splits() {
        for (const std::int32_t id : splitters_)
            for (std::int32_t group = 2; group > 0; --group) {
                Split split{id, {}, unit()};
                for (std::int32_t n = 1 + below(3); n > 0; --n)
                    split.members.push_back(kFirstId + static_cast<std::int32_t>(below(model_.components.size())));
                model_.splits.push_back(split);
            }
    }

    std::mt19937 random_;
    NetworkCall call_;
    Model& model_ = call_.model;
    std::vector<Port> outputs_;
    std::vector<std::int32_t> splitters_;
    std::set<std::pair<std::int32_t, std::int32_t>> cells_;
};

}  // namespace

NetworkCall randomNetwork(std::uint32_t seed) {
    return Builder(seed).build();
}
