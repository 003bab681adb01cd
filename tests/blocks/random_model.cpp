#include "random_model.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::int32_t kFirstId = 1001;
constexpr std::int32_t kFirstKey = 501;
constexpr int kHighestSpecification = 63;
constexpr std::int32_t kDelay = 51;
constexpr std::int32_t kReservoir = 39;

struct Kind {
    std::int32_t code;
    int inputs;
    bool usesKey;  // looks for series or stores of its key
};

// Those that look at others stand more than once.
constexpr Kind kKinds[] = {
    {1, 0, true},   {2, 0, true},   {9, 0, true},   {10, 0, true},  {3, 1, false},  {11, 1, false}, {22, 1, false},
    {23, 1, false}, {24, 1, false}, {25, 1, false}, {26, 1, false}, {27, 1, false}, {28, 0, true},  {29, 0, true},
    {30, -1, true}, {31, -1, true}, {32, 2, false}, {33, 1, false}, {33, 1, false}, {34, 1, false}, {35, 1, false},
    {36, 1, false}, {36, 1, false}, {37, 1, false}, {38, 1, false}, {39, 2, false}, {40, 1, false}, {41, 1, false},
    {42, 1, false}, {43, 1, false}, {44, 1, true},  {45, 0, false}, {46, 0, true},  {47, 1, false}, {48, 1, false},
    {49, 1, true},  {50, 1, false}, {52, 1, false}, {53, 1, false}, {54, 0, true},  {55, 1, false}, {56, 1, false},
    {57, 1, true},  {58, 1, false}, {59, 0, true},  {60, 0, true},  {61, 0, true},  {62, 0, true},  {63, 1, false},
    {64, 1, false}, {64, 1, false}, {51, 1, false},
};

class Maker {
  public:
    explicit Maker(std::uint32_t seed) : dice_(seed) {}

    RandomModel make() {
        settings();
        for (int key = 0; key < keys_; ++key)
            addGroup(kFirstKey + key);
        specifications();
        components();
        connections();
        splits();
        oddities();
        calls();
        return std::move(made_);
    }

  private:
    Model& M() { return made_.model; }
    float pick(int low, int high) { return static_cast<float>(dice_(low, high + 1)) / 8.0F; }

    std::vector<float> picks(int each, int low, int high) {
        std::vector<float> values(static_cast<std::size_t>(each * (M().nSteps + 1)));
        for (float& value : values)
            value = pick(low, high);
        return values;
    }

    void settings() {
        M().nSteps = dice_.oneIn(5) ? dice_(60, 150) : dice_(1, 12);
        M().Latitude = pick(-8 * 60, 8 * 60);
        M().StartTime = 86400 * dice_(0, 20000);
        M().TimeStep = dice_.oneIn(20) ? 0.5F : 1.0F;
        M().StopOnInfeas = dice_(0, 2);
        M().BuildTree = dice_(0, 2);
        keys_ = dice_(1, 4);
    }

    void addGroup(std::int32_t key) {
        const auto add = [&](Table table, std::vector<float> values) {
            M().table(table).push_back({key, std::move(values)});
        };
        M().pots.push_back(key);
        add(Table::FreqSer, picks(kAppliances, 0, 40));
        add(Table::Rainfall, picks(1, 0, 160));
        add(Table::Temp, picks(1, 0, 200));
        add(Table::Tmin, picks(1, -40, 100));
        add(Table::Tmax, picks(1, 100, 300));
        add(Table::Wind, picks(1, 0, 200));
        add(Table::Occup, picks(1, 0, 40));
        add(Table::Dmdflct, picks(1, 0, 16));
        // A day whose minimum is above its maximum stops the run there.
        if (dice_.oneIn(5)) M().table(Table::Tmin).back().values[step()] = 100.0F;
    }

    std::size_t step() { return static_cast<std::size_t>(dice_(0, M().nSteps)); }

    void specifications() {
        for (int brand = 1; brand <= kBrands; ++brand) {
            const int missing = dice_.oneIn(12) ? dice_(1, kHighestSpecification) : 0;
            for (int number = 1; number <= kHighestSpecification; ++number) {
                if (number == missing) continue;
                const float value = number == 1 || number > 60 ? pick(1, 400) : pick(0, 8);
                M().specifications.push_back(
                    {0, 0, static_cast<float>(brand), 0, 1, 1, static_cast<float>(number), value, 0});
            }
        }
    }

    void components() {
        // What feeds the first ones, and all the rest where nothing else does.
        for (int source = 0; source < kSources; ++source)
            addComponent({28, 0, true}, dice_(0, keys_));
        // A multiplier without an input takes what the last component of the step before left.
        if (dice_.oneIn(4)) {
            addComponent({34, 0, false}, 0);
            addComponent({26, 1, false}, 0);
        }
        const int delays = dice_(0, 3);
        for (int i = 0; i < delays; ++i)
            addComponent({kDelay, 1, false}, dice_(0, keys_));
        // Two reservoirs a key, for those that look for them.
        for (int key = 0; key < keys_; ++key) {
            addComponent({kReservoir, 2, false}, key);
            addComponent({kReservoir, 2, false}, key);
        }
        const int more = dice_(1, 30);
        for (int i = 0; i < more; ++i) {
            const Kind kind = kKinds[dice_(0, static_cast<int>(std::size(kKinds)))];
            addComponent(kind, kind.usesKey ? dice_(0, keys_) : dice_(-1, keys_));
        }
        if (dice_.oneIn(10)) addInfeasible();
        if (dice_.oneIn(10)) addStopping();
    }

    // An abstraction that cannot deliver on some day, after a unit that leaves its range of temperature to the process.
    void addInfeasible() {
        addComponent({59, 0, true}, 0);
        addComponent({45, 0, false}, 0);
        addComponent({40, 1, false}, 0);
        M().StopOnInfeas = 1;
        isShuffled_ = false;
    }

    // A store whose weather ends the run, last of all.
    void addStopping() {
        addComponent({46, 0, true}, 0);
        for (NamedSeries& tMin : M().table(Table::Tmin)) {
            if (tMin.id == kFirstKey) tMin.values[step()] = 100.0F;
        }
        isShuffled_ = false;
    }

    void addComponent(Kind kind, int key) {
        const auto id = kFirstId + static_cast<std::int32_t>(kinds_.size());
        const float size = kind.code == kDelay ? static_cast<float>(dice_(0, 4)) : pick(0, 400);
        M().components.push_back({static_cast<float>(id), static_cast<float>(kind.code),
                                  key < 0 ? 0.0F : static_cast<float>(kFirstKey + key),
                                  static_cast<float>(dice_(1, kBrands + 1)), size});
        kinds_.push_back(kind);
        const auto add = [&](Table table, std::vector<float> values) {
            M().table(table).push_back({id, std::move(values)});
        };
        add(Table::WatQuant, picks(1, 0, 160));
        add(Table::WatQual, picks(1, 0, 160));
        add(Table::InsDmd, picks(1, 0, 160));
        add(Table::Threshold, picks(1, -400, 400));
        if (kind.code == 34) add(Table::Multpls, picks(1, 0, 16));
    }

    // Inputs come from components further up the list, so that only delays, which stand near its top, close cycles.
    void connections() {
        const auto count = static_cast<int>(kinds_.size());
        for (int i = 0; i < count; ++i) {
            const Kind kind = kinds_[static_cast<std::size_t>(i)];
            const int inputs = kind.code == kDelay ? 1
                               : kind.inputs < 0   ? dice_(0, 5)
                               : kind.code == 34   ? dice_(0, 3)
                                                   : kind.inputs;
            // Of two connections between the same two the first would be lost.
            const int senders = kind.code == kDelay ? count : i;
            const std::int32_t before = i > 0 ? kinds_[static_cast<std::size_t>(i) - 1].code : 0;
            const bool belongTogether = (kind.code == 40 && before == 45) || (kind.code == 26 && before == 34);
            const int first = belongTogether ? i - 1 : dice_(0, std::max(senders, 1));
            for (int port = 1; port <= inputs; ++port) {
                const int at = kind.code == 34 && dice_.oneIn(4) ? 2 : kind.inputs < 0 ? 1 : port;
                connect(onceOnly((first + (port - 1) * dice_(1, kSources)) % senders), dice_(1, 3), i, at);
            }
        }
    }

    // Where a delay closes a cycle the ordering cuts its first connection alone: one that sends twice may have none.
    int onceOnly(int sender) {
        Kind& kind = kinds_[static_cast<std::size_t>(sender)];
        if (kind.code != kDelay || dice_.oneIn(20)) return sender;
        return std::exchange(kind.inputs, 0) == 1 ? sender : dice_(0, kSources);
    }

    void connect(int sender, int senderPort, int receiver, int receiverPort) {
        const auto link = static_cast<std::int32_t>(M().connections.size()) + 1;
        M().connections.push_back({link, kFirstId + sender, senderPort, kFirstId + receiver, receiverPort});
    }

    std::int32_t anyId() { return kFirstId + dice_(0, static_cast<int>(kinds_.size())); }

    void splits() {
        for (std::size_t i = 0; i < kinds_.size(); ++i) {
            if (kinds_[i].code != 36) continue;
            for (int groups = dice_(0, 3); groups > 0; --groups) {
                std::vector<std::int32_t> members(static_cast<std::size_t>(dice_(1, 4)));
                for (std::int32_t& member : members)
                    member = anyId();
                M().splits.push_back({kFirstId + static_cast<std::int32_t>(i), members, pick(-400, 400)});
            }
        }
    }

    void oddities() {
        std::vector<ConnectionRow>& rows = M().connections;
        for (int lone = dice_(0, 6); lone > 3; --lone)
            anyOf(rows).receiverPort = 2;
        if (dice_.oneIn(12)) anyOf(rows).senderPort = M().BuildTree ? 2 : 3;
        if (dice_.oneIn(25)) anyOf(rows).receiverPort = 0;
        if (dice_.oneIn(12)) rows.push_back(anyOf(rows));
        if (dice_.oneIn(12)) anyOf(M().components).id = anyOf(M().components).id;
        if (isShuffled_ && dice_.oneIn(2)) {
            auto& table = M().components;
            for (std::size_t i = table.size(); i > 1; --i)
                std::swap(table[i - 1], table[static_cast<std::size_t>(dice_(0, static_cast<int>(i)))]);
        }
        if (dice_.oneIn(6)) overlap();
    }

    // What a store writes is what a source sends, what a threshold is, or what another store writes.
    void overlap() {
        std::vector<std::size_t> stores;
        std::vector<std::pair<Table, std::size_t>> others;
        for (std::size_t i = 0; i < kinds_.size(); ++i) {
            switch (kinds_[i].code) {
                case 22:
                case 29:
                case 32:
                case 33:
                case 39:
                case 50:
                case 62:
                    stores.push_back(i);
                    others.emplace_back(Table::WatQuant, i);
                    others.emplace_back(Table::WatQual, i);
                    break;
                case 45:
                case 56:
                    others.emplace_back(Table::InsDmd, i);
                    break;
                case 53:
                case 63:
                    others.emplace_back(Table::Threshold, i);
                    break;
                default:
                    break;
            }
        }
        const auto [other, entry] = anyOf(others);
        made_.overlaps.push_back({Table::WatQuant, anyOf(stores), other, entry, dice_(0, 2)});
    }

    template <typename Element>
    Element& anyOf(std::vector<Element>& elements) {
        return elements[static_cast<std::size_t>(dice_(0, static_cast<int>(elements.size())))];
    }
    void calls() {
        const std::int32_t n = M().nSteps;
        if (dice_.oneIn(3)) {
            const int cut = dice_(1, n + 1);
            made_.calls = {{1, cut}, {cut + 1, n}};
        } else {
            made_.calls = {{1, n}};
        }
        // What the process keeps shows in a call after that.
        if (dice_.oneIn(2)) made_.calls.push_back({1, n});
        if (dice_.oneIn(8)) made_.calls.push_back({dice_(-2, 2), n + dice_(0, 3)});
    }

    static constexpr int kBrands = 3;
    static constexpr int kSources = 3;
    Numbers dice_;
    RandomModel made_;
    std::vector<Kind> kinds_;
    int keys_ = 1;
    bool isShuffled_ = true;
};

}  // namespace

RandomModel makeRandomModel(std::uint32_t seed) {
    return Maker(seed).make();
}
