#include "engine_record.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <limits>

#include "random_model.h"

namespace {

constexpr int kMostOddities = 12;  // beside those of the generator

using Limits = std::numeric_limits<float>;
constexpr float kOrdinary[] = {1.0F, 0.0F, 0.5F, 2.0F, 10.0F, 0.1F, 100.0F, 3.0F, 25.0F, -1.0F, 1e6F, 0.01F};
constexpr float kNasty[] = {
    Limits::quiet_NaN(),  Limits::infinity(), -Limits::infinity(), -0.0F,      Limits::denorm_min(),
    Limits::max(),        -Limits::max(),     16777216.0F,         16777218.F, 2147483648.0F,
    -2147483648.0F,       2147483520.0F,      4294967296.0F,       -0.5F,      0.499999970F,
    -Limits::denorm_min()};
constexpr std::int32_t kNastyIntegers[] = {0,
                                           -1,
                                           1,
                                           3,
                                           99,
                                           100,
                                           16777217,
                                           std::numeric_limits<std::int32_t>::max(),
                                           std::numeric_limits<std::int32_t>::min(),
                                           21474836,
                                           -21474836};

class Builder {
  public:
    Builder(const std::uint8_t* data, std::size_t size) : in_(data, size) {}

    FuzzedHost build() {
        const RandomOptions options{
            .mostSteps = 20, .mostComponents = 20, .odd = true, .pattern = 3, .value = [this] { return number(); }};
        random_ = makeRandomModel(options, [this](int low, int end) { return between(low, end - 1); });
        for (int more = between(0, kMostOddities); more > 0; --more)
            makeOdd();
        FuzzedHost fuzzed{std::make_unique<HostRecord>(random_.model), random_.calls};
        for (const Overlap& overlap : random_.overlaps)
            fuzzed.host->overlap(overlap);
        for (int more = between(0, 3); more > 0; --more)
            makeOdd(*fuzzed.host);
        return fuzzed;
    }

  private:
    Model& M() { return random_.model; }

    // An exhausted input gives the lowest: then everything is ordinary.
    int between(int low, int high) { return in_.ConsumeIntegralInRange(low, high); }
    std::size_t below(std::size_t n) { return in_.ConsumeIntegralInRange<std::size_t>(0, n - 1); }

    float number() {
        const auto kind = in_.ConsumeIntegral<std::uint8_t>();
        if (kind < 190) return kOrdinary[kind % std::size(kOrdinary)];
        if (kind < 230) return kNasty[kind % std::size(kNasty)];
        return std::bit_cast<float>(in_.ConsumeIntegral<std::uint32_t>());
    }

    std::int32_t integer() {
        const auto kind = in_.ConsumeIntegral<std::uint8_t>();
        if (kind < 128) return kNastyIntegers[kind % std::size(kNastyIntegers)];
        return in_.ConsumeIntegral<std::int32_t>();
    }

    // An id that the network knows, or any.
    std::int32_t anyId() {
        if (M().components.empty() || between(0, 9) == 9) return integer();
        return static_cast<std::int32_t>(static_cast<std::int64_t>(kFirstId) + between(0, 30));
    }
    std::int32_t anyPort() { return between(0, 9) == 9 ? integer() : between(1, 2); }

    // Another value for an integer held as a float.
    float odd(float value) {
        const float others[] = {value + 0.3F, -value, static_cast<float>(anyId()), number()};
        return others[below(std::size(others))];
    }

    template <class Row>
    void insert(std::vector<Row>& table, const Row& row) {
        table.insert(table.begin() + static_cast<std::ptrdiff_t>(below(table.size() + 1)), row);
    }
    template <class Row>
    void erase(std::vector<Row>& table) {
        if (!table.empty()) table.erase(table.begin() + static_cast<std::ptrdiff_t>(below(table.size())));
    }

    void makeOdd() {
        switch (between(0, 8)) {
            case 0:
                return oddComponent();
            case 1:
                return insert(M().connections, {integer(), anyId(), anyPort(), anyId(), anyPort()});
            case 2:
                return insert(M().specifications,
                              {0.0F, 0.0F, number(), 0.0F, number(), number(), number(), number(), 0.0F});
            case 3:
                return erase(M().specifications);
            case 4:
                return oddSeries();
            case 5:
                return insert(M().splits, {anyId(), std::vector<std::int32_t>(below(4), anyId()), number()});
            case 6:
                return between(0, 1) == 0 ? insert(M().pots, anyId()) : erase(M().pots);
            case 7:
                return insert(random_.calls, {integer(), integer()});
            default:
                return between(0, 1) == 0 ? erase(M().connections) : erase(M().components);
        }
    }

    void oddComponent() {
        if (M().components.empty()) return;
        ComponentRow& row = M().components[below(M().components.size())];
        constexpr float ComponentRow::*kFields[] = {&ComponentRow::id, &ComponentRow::techid, &ComponentRow::key,
                                                    &ComponentRow::brand, &ComponentRow::size};
        float& field = row.*kFields[below(std::size(kFields))];
        field = odd(field);
    }

    // Under another id, so that one is missing or stands twice, or in the memory of another one of its table.
    void oddSeries() {
        const std::size_t which = below(kTables.size());
        std::vector<NamedSeries>& table = M().series[which];
        if (table.empty()) return;
        const std::size_t entry = below(table.size());
        if (between(0, 1) == 0 || static_cast<Table>(which) == Table::FreqSer) {
            table[entry].id = anyId();
        } else {
            const auto same = static_cast<Table>(which);
            random_.overlaps.push_back({same, entry, same, below(table.size()), 0});
        }
    }

    // What the record itself says.
    void makeOdd(HostRecord& host) {
        AUEglobals& record = host.record();
        switch (between(0, 6)) {
            case 0:
                return oddCount(record);
            case 1:
                record.nSteps = between(-2, 0);
                return;
            case 2:
                record.TimeStep = number();
                return;
            case 3:
                record.StartTime = integer();
                return;
            case 4:
                record.ErrFlag = between(-1, 2);
                return;
            case 5:
                return takeValues(host);
            default:
                record.CurStep = integer();
        }
    }

    void takeValues(HostRecord& host) {
        const auto table = static_cast<Table>(below(kTables.size()));
        const auto count = static_cast<std::size_t>(std::max(host.count(table), 0));
        if (count > 0) host.entries(table)[below(count)].Value = nullptr;
    }

    void oddCount(AUEglobals& record) {
        constexpr std::int32_t AUEglobals::*kCounts[] = {&AUEglobals::nPotComps, &AUEglobals::nTechSpecs,
                                                         &AUEglobals::nComps, &AUEglobals::nConns,
                                                         &AUEglobals::nSplits};
        const std::size_t which = below(std::size(kCounts) + kTables.size());
        const auto field = which < std::size(kCounts) ? kCounts[which] : kTables[which - std::size(kCounts)].count;
        record.*field = -between(1, 1000);
    }

    FuzzedDataProvider in_;
    RandomModel random_;
};

}  // namespace

FuzzedHost makeHost(const std::uint8_t* data, std::size_t size) {
    return Builder(data, size).build();
}
