#include "engine_record.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "components/lookup.h"
#include "simulation/dispatch.h"

namespace {

constexpr int kMostComponents = 24;
constexpr int kMostSteps = 20;
constexpr int kKinds = 11;  // uses of appliances a step
constexpr int kGroups = 3;
constexpr int kBrands = 3;
constexpr int kHighestSpecification = 63;
constexpr std::int32_t kFirstId = 101;

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
        host_.record = std::make_unique<AUEglobals>();
        R().nSteps = in_.ConsumeIntegralInRange(1, kMostSteps);
        if (rarely()) R().nSteps = in_.ConsumeIntegralInRange(-2, 0);
        settings();
        components();
        connections();
        specifications();
        series();
        splits();
        potentials();
        calls();
        return std::move(host_);
    }

  private:
    AUEglobals& R() { return *host_.record; }

    // An exhausted input gives zeros: then everything is ordinary.
    bool rarely() { return in_.ConsumeIntegral<std::uint8_t>() > 248; }
    std::size_t below(std::size_t n) { return in_.ConsumeIntegralInRange<std::size_t>(0, n - 1); }

    float number() {
        const auto kind = in_.ConsumeIntegral<std::uint8_t>();
        if (kind < 190) return kOrdinary[kind % std::size(kOrdinary)];
        if (kind < 230) return kNasty[kind % std::size(kNasty)];
        const auto bits = in_.ConsumeIntegral<std::uint32_t>();
        float value = 0.0F;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    std::int32_t integer() {
        const auto kind = in_.ConsumeIntegral<std::uint8_t>();
        if (kind < 128) return kNastyIntegers[kind % std::size(kNastyIntegers)];
        return in_.ConsumeIntegral<std::int32_t>();
    }

    // An id that the network knows, or any.
    std::int32_t anyId() {
        if (rarely() || components_.empty()) return integer();
        return nint(components_[below(components_.size())].id);
    }

    // The number of entries, or a negative one over an empty table.
    template <class T>
    std::int32_t countOf(std::vector<T>& table) {
        if (in_.ConsumeIntegral<std::uint8_t>() > 252) {
            table.clear();
            return -1 - std::abs(in_.ConsumeIntegral<std::int16_t>());
        }
        return static_cast<std::int32_t>(table.size());
    }

    void settings() {
        R().TimeStep = rarely() ? number() : 1.0F;
        R().Latitude = number();
        R().StartTime = rarely() ? integer() : in_.ConsumeIntegralInRange(0, 20000) * 86400;
        R().StopOnInfeas = in_.ConsumeBool();
        R().BuildTree = in_.ConsumeBool() ? 1 : 0;
        R().CurStep = integer();
        R().ErrFlag = rarely() ? in_.ConsumeIntegralInRange(-1, 2) : 0;
    }

    void components() {
        const int n = in_.ConsumeIntegralInRange(0, kMostComponents);
        for (int i = 0; i < n; ++i) {
            ComponentRow row{};
            row.id = static_cast<float>(kFirstId + i);
            row.techid = static_cast<float>(type());
            row.key = static_cast<float>(in_.ConsumeIntegralInRange(0, kGroups));
            row.brand = static_cast<float>(in_.ConsumeIntegralInRange(1, kBrands));
            row.size = number();
            if (rarely()) row.id = odd(row.id);
            if (rarely()) row.techid = odd(row.techid);
            if (rarely()) row.key = odd(row.key);
            if (rarely()) row.brand = odd(row.brand);
            components_.push_back(row);
        }
        R().nComps = countOf(components_);
        R().Net_Compnt = host_.arrays.put(components_);
    }

    // One of the types that there are; those that look at others of a certain type stand more often.
    std::int32_t type() {
        constexpr std::int32_t kSociable[] = {26, 33, 34, 36, 37, 39, 39, 51};
        const std::int32_t code = in_.ConsumeIntegralInRange(1, 64 + static_cast<int>(std::size(kSociable)));
        if (code > 64) return kSociable[code - 65];
        return code < 12 || code > 21 ? code : code + 18;
    }

    // Another value for an integer held as a float.
    float odd(float value) {
        switch (in_.ConsumeIntegralInRange(0, 4)) {
            case 0:
                return number();
            case 1:
                return value + 0.3F;
            case 2:
                return -value;
            case 3:  // twice the same
                return components_.empty() ? value : components_.front().id;
            default:
                return static_cast<float>(integer());
        }
    }

    // Gives each component the inputs that its type requires, from components before it in the table or, now and then,
    // from any. Then some connections at random.
    void connections() {
        std::vector<ConnectionRow> table;
        for (std::size_t i = 0; i < components_.size(); ++i) {
            for (std::int32_t port = 1; port <= inputsOf(nint(components_[i].techid)); ++port) {
                const bool backwards = i > 0 && !rarely();
                const std::size_t sender = below(backwards ? i : components_.size());
                table.push_back(
                    {0, nint(components_[sender].id), in_.ConsumeBool() ? 2 : 1, nint(components_[i].id), port});
            }
        }
        const int more = rarely() ? in_.ConsumeIntegralInRange(1, 8) : 0;
        for (int i = 0; i < more; ++i) {
            const ConnectionRow row{integer(), anyId(), anyPort(), anyId(), anyPort()};
            table.insert(table.begin() + static_cast<std::ptrdiff_t>(below(table.size() + 1)), row);
        }
        R().nConns = countOf(table);
        R().Net_Conn = host_.arrays.put(table);
    }

    int inputsOf(std::int32_t code) {
        const ComponentType* const type = findType(code);
        if (type && type->inputs != kAnyInputs) return type->inputs;
        return in_.ConsumeIntegralInRange(0, 3);
    }

    std::int32_t anyPort() { return rarely() ? integer() : in_.ConsumeIntegralInRange(1, 2); }

    void specifications() {
        std::vector<SpecificationRow> table;
        for (int brand = 1; brand <= kBrands; ++brand) {
            const float values[] = {number(), number(), number(), number(), number()};
            const int missing = rarely() ? in_.ConsumeIntegralInRange(1, kHighestSpecification) : 0;
            for (int number = 1; number <= kHighestSpecification; ++number) {
                if (number == missing) continue;
                SpecificationRow row{};
                row.brand = static_cast<float>(brand);
                row.select1 = row.select2 = 1.0F;
                row.number = static_cast<float>(number);
                row.value = values[static_cast<std::size_t>(number) % std::size(values)];
                table.push_back(row);
            }
        }
        for (int more = rarely() ? in_.ConsumeIntegralInRange(1, 4) : 0; more > 0; --more) {
            const SpecificationRow row{0.0F, 0.0F, number(), 0.0F, number(), number(), number(), number(), 0.0F};
            table.insert(table.begin() + static_cast<std::ptrdiff_t>(below(table.size() + 1)), row);
        }
        R().nTechSpecs = countOf(table);
        R().TechSpecs = host_.arrays.put(table);
    }

    void series() {
        AUEglobals& r = R();
        seriesTable(r.FreqSer, r.nFreqSer, kKinds);
        seriesTable(r.Rainfall, r.nRainfall);
        seriesTable(r.Temp, r.nTemp);
        seriesTable(r.Tmin, r.nTmin);
        seriesTable(r.Tmax, r.nTmax);
        seriesTable(r.Wind, r.nWind);
        seriesTable(r.Multpls, r.nMultpls);
        seriesTable(r.Threshold, r.nThreshold);
        seriesTable(r.Occup, r.nOccup);
        seriesTable(r.Dmdflct, r.nDmdflct);
        seriesTable(r.InsDmd, r.nInsDmd);
        seriesTable(r.WatQuant, r.nWatQuant, 1, true);
        seriesTable(r.WatQual, r.nWatQual, 1, true);
    }

    // Entries for every component and group, of which one may be missing or stand twice; some share an array.
    void seriesTable(SeriesEntry*& entries, std::int32_t& count, int perStep = 1, bool state = false) {
        std::vector<std::int32_t> ids;
        for (std::int32_t group = 0; group <= kGroups; ++group)
            ids.push_back(group);
        for (const ComponentRow& component : components_)
            ids.push_back(nint(component.id));
        if (rarely()) ids.erase(ids.begin() + static_cast<std::ptrdiff_t>(below(ids.size())));
        if (rarely()) ids.insert(ids.begin() + static_cast<std::ptrdiff_t>(below(ids.size() + 1)), anyId());
        const std::vector<float> values = seriesValues(perStep);
        const bool shared = !state || rarely();
        float* const one = shared ? host_.arrays.put(values, state) : nullptr;
        std::vector<SeriesEntry> table;
        for (const std::int32_t id : ids) {
            SeriesEntry entry;
            std::memset(&entry, 0, sizeof entry);
            entry.id = id;
            entry.Value = shared ? one : host_.arrays.put(values, state);
            table.push_back(entry);
        }
        count = countOf(table);
        entries = host_.arrays.put(table);
    }

    std::vector<float> seriesValues(int perStep) {
        const float pattern[] = {number(), number(), number()};
        std::vector<float> values(static_cast<std::size_t>(std::max(R().nSteps, 0) * perStep));
        for (std::size_t k = 0; k < values.size(); ++k)
            values[k] = pattern[k % std::size(pattern)];
        return values;
    }

    void splits() {
        std::vector<SplitEntry> table;
        for (int n = in_.ConsumeIntegralInRange(0, 4); n > 0; --n) {
            std::vector<std::int32_t> members;
            for (int m = in_.ConsumeIntegralInRange(0, 3); m > 0; --m)
                members.push_back(anyId());
            SplitEntry entry;
            std::memset(&entry, 0, sizeof entry);
            entry.id = splitterId();
            entry.nMembers = countOf(members);
            entry.members = host_.arrays.put(members);
            entry.beta = number();
            table.push_back(entry);
        }
        R().nSplits = countOf(table);
        R().Splits = host_.arrays.put(table);
    }

    std::int32_t splitterId() {
        for (const ComponentRow& component : components_)
            if (component.techid == 36.0F && in_.ConsumeBool()) return nint(component.id);
        return anyId();
    }

    void potentials() {
        std::vector<std::int32_t> ids;
        for (std::int32_t group = 1; group <= kGroups; ++group)
            ids.push_back(group);
        if (rarely()) ids.pop_back();
        if (rarely()) ids.push_back(anyId());
        R().nPotComps = countOf(ids);
        R().PotCompIds = host_.arrays.put(ids);
    }

    void calls() {
        for (int n = in_.ConsumeBool() ? 2 : 1; n > 0; --n) {
            Call call{1, R().nSteps};
            if (rarely()) call.first = in_.ConsumeIntegralInRange(-3, kMostSteps + 3);
            if (rarely()) call.last = in_.ConsumeIntegralInRange(-3, kMostSteps + 3);
            if (rarely()) call.first = integer();
            if (rarely()) call.last = integer();
            host_.calls.push_back(call);
        }
    }

    FuzzedDataProvider in_;
    FuzzedHost host_;
    std::vector<ComponentRow> components_;
};

}  // namespace

void* HostArrays::put(const std::byte* bytes, std::size_t size, bool writable) {
    void* const block = std::malloc(size);
    if (size > 0) std::memcpy(block, bytes, size);
    Array& array = arrays_.emplace_back();
    array.block.reset(block);
    if (!writable) array.before.assign(bytes, bytes + size);
    return block;
}

bool HostArrays::unchanged() const {
    return std::all_of(arrays_.begin(), arrays_.end(), [](const Array& array) {
        return array.before.empty() || std::memcmp(array.block.get(), array.before.data(), array.before.size()) == 0;
    });
}

void HostArrays::remember() {
    for (Array& array : arrays_)
        if (!array.before.empty()) std::memcpy(array.before.data(), array.block.get(), array.before.size());
}

FuzzedHost makeHost(const std::uint8_t* data, std::size_t size) {
    return Builder(data, size).build();
}
