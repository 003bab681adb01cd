#include "random_model.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <random>

#include "components/type_codes.h"
#include "random_tables.h"
#include "simulation/dispatch.h"

namespace {

constexpr std::int32_t kFirstGroup = 2000001;
constexpr int kMostInputs = 4;
// One of these can lie in the memory of a state.
constexpr Table kOfComponents[] = {Table::WatQuant, Table::WatQual, Table::InsDmd, Table::Threshold};

bool looksForReservoirs(std::int32_t type) {
    return type == code::kHydropower || type == code::kQualityFromReservoir || type == code::kPumpedStorage ||
           type == code::kQualitySwitch;
}

// How often a type stands among those to choose from: the nine appliances are one model, and some types show only in
// company.
std::size_t weightOf(const ComponentType& type) {
    if (type.forms[0] == &App_Pots) return 1;
    const bool isSociable = type.isReceiver() || type.code == code::kSplitter || type.code == code::kMultiplier ||
                            type.code == code::kQuotaLimiter || looksForReservoirs(type.code);
    return isSociable ? 4 : 2;
}

class Maker {
  public:
    Maker(const RandomOptions& options, const Dice& dice)
        : options_(options), draw_(options, dice), tables_(options, draw_, made_.model) {}

    RandomModel make() {
        settings();
        chooseTypes();
        for (int group = 0; group <= groups_; ++group)
            tables_.addGroup(group == 0 ? 0 : kFirstGroup + group - 1);
        for (int brand = 1; brand <= brands_; ++brand)
            tables_.addBrand(brand);
        components();
        connections();
        recorders();
        splits();
        isStopping_ = draw_.oddOneIn(6);
        if (isStopping_) addStopping();
        if (options_.odd) oddities();
        shuffle();
        calls();
        return std::move(made_);
    }

  private:
    struct Component {
        std::int32_t type;
        bool sends;
        bool isDelay() const { return type == code::kDelay; }
    };

    Model& M() { return made_.model; }
    int count() const { return static_cast<int>(components_.size()); }
    Component& component(int i) { return components_[static_cast<std::size_t>(i)]; }

    void settings() {
        M().nSteps = draw_.between(1, options_.mostSteps);
        M().Latitude = draw_.value(-60, 60);
        M().StartTime = 86400 * draw_.below(20000);
        if (draw_.oneIn(4)) M().StartTime += draw_.below(86400);
        M().TimeStep = draw_.oddOneIn(20) ? 0.5F : 1.0F;
        M().StopOnInfeas = draw_.oddOneIn(2) ? 1 : 0;
        M().BuildTree = options_.tree && draw_.oneIn(2) ? 1 : 0;
        groups_ = draw_.between(1, 4);
        groupsWithReservoirs_ = options_.reservoirs ? draw_.below(groups_ + 1) : 0;
        brands_ = draw_.between(1, 5);
    }

    bool mayChoose(std::int32_t type) const {
        return options_.types.empty() ||
               std::find(options_.types.begin(), options_.types.end(), type) != options_.types.end();
    }

    void chooseTypes() {
        types_ = {code::kJunction, code::kMixer};
        for (const ComponentType& type : componentTypes()) {
            if (!mayChoose(type.code)) continue;
            if (!options_.delays && (type.code == code::kDelay || type.code == code::kQuotaLimiter)) continue;
            if (!options_.radiation && (type.code == code::kSolarPanel || type.code == code::kNetRadiation)) continue;
            if (groupsWithReservoirs_ == 0 && looksForReservoirs(type.code)) continue;
            types_.insert(types_.end(), weightOf(type), type.code);
        }
        // A few types, many of each, show what they do to one another.
        if (draw_.oneIn(3)) {
            std::vector<std::int32_t> few(static_cast<std::size_t>(draw_.between(2, 8)));
            std::generate(few.begin(), few.end(), [&] { return draw_.anyOf(types_); });
            types_ = few;
        } else if (M().BuildTree != 0 && draw_.oneIn(3)) {
            types_.assign(6, code::kSplitter);
            for (const ComponentType& type : componentTypes()) {
                if (type.isReceiver()) types_.insert(types_.end(), {type.code, type.leafTypes[0], type.leafTypes[1]});
            }
        }
    }

    std::int32_t anyKey() { return draw_.oneIn(8) ? 0 : kFirstGroup + draw_.below(groups_); }

    void components() {
        // The first two set all that the driver keeps from one step to the next.
        for (const std::int32_t type : {code::kImperviousSurface, code::kConnector, code::kDemandSource})
            add(type, anyKey());
        // One without an input takes what the last component of the step before left.
        if (draw_.oddOneIn(4)) add(code::kMultiplier, 0);
        for (int delays = options_.delays && options_.loops ? draw_.below(3) : 0; delays > 0; --delays)
            add(code::kDelay, anyKey());
        for (int group = 0; group < groupsWithReservoirs_; ++group) {
            add(code::kReservoir, kFirstGroup + group);
            add(code::kReservoir, kFirstGroup + group);
        }
        for (int more = draw_.between(1, options_.mostComponents); more > 0; --more) {
            const std::int32_t type = draw_.anyOf(types_);
            add(type, looksForReservoirs(type) ? kFirstGroup + draw_.below(groupsWithReservoirs_) : anyKey());
        }
    }

    // What stops the run on some day, last of all. A unit behind it leaves its range of temperature to the process.
    void addStopping() {
        const std::int32_t key = kFirstGroup + groups_;
        tables_.addGroup(key);
        if (draw_.oneIn(2)) {
            add(code::kGreenArea, key);
            tables_.spoilLastGroup();
        } else {
            add(code::kDemandSource, key);
            add(code::kAbstraction, key);
            connect(count() - 2, 1, count() - 1, 1);
            M().StopOnInfeas = 1;
        }
        add(code::kSolarPanel, key);
    }

    void add(std::int32_t type, std::int32_t key) {
        tables_.addComponent(kFirstId + count());
        float size = 0.0F;
        if (type != code::kDelay) {
            size = draw_.value(0, 50);
        } else {
            size = static_cast<float>(draw_.oddOneIn(40) ? -1 : draw_.below(5));
        }
        addRow(type, key, draw_.between(1, brands_), size);
    }

    void addRow(std::int32_t type, std::int32_t key, int brand, float size) {
        M().components.push_back({static_cast<float>(kFirstId + count()), static_cast<float>(type),
                                  static_cast<float>(key), static_cast<float>(brand), size});
        components_.push_back({type, false});
    }

    // Inputs come from components further up, so that only delays, whose input comes from anywhere, close loops.
    void connections() {
        for (int i = 0; i < count(); ++i) {
            const ComponentType* const type = findType(component(i).type);
            const bool isAny = type && type->inputs == kAnyInputs;
            const int inputs = !type ? draw_.below(kMostInputs + 1) : isAny ? draw_.below(3) : type->inputs;
            // On one port all of a sum's, and now and then a multiplier's.
            const bool isSum = !type || (isAny && draw_.oneIn(4));
            std::vector<int> senders;
            for (int port = 1; port <= inputs; ++port) {
                const auto sender = anySender(i, senders);
                if (!sender) break;
                connect(*sender, draw_.between(1, outputsOf(*sender)), i, isSum ? 1 : port);
                senders.push_back(*sender);
            }
        }
    }

    // One that does not send to the component yet: of two connections between the same two the first would be lost.
    // Where a delay closes a loop the ordering cuts its first connection alone, so that it may have no other.
    std::optional<int> anySender(int receiver, const std::vector<int>& others) {
        const int end = options_.loops && component(receiver).isDelay() ? count() : receiver;
        const int first = draw_.below(end);
        for (int i = 0; i < end; ++i) {
            const int sender = (first + i) % end;
            if (std::find(others.begin(), others.end(), sender) != others.end()) continue;
            if (component(sender).isDelay() && component(sender).sends && !draw_.oddOneIn(20)) continue;
            return sender;
        }
        return std::nullopt;
    }

    // The first component sets one; the other is what the last component of the step before left.
    int outputsOf(int i) const { return i == 0 && !options_.odd ? 1 : 2; }

    void connect(int sender, int senderPort, int receiver, int receiverPort) {
        std::vector<ConnectionRow>& rows = M().connections;
        const auto link = static_cast<std::int32_t>(rows.size()) + 1;
        rows.push_back({link, kFirstId + sender, senderPort, kFirstId + receiver, receiverPort});
        component(sender).sends = true;
    }

    // Of a random share of all outputs. A splitter that sends to nothing at the end of a traced path, and a delay that
    // does so where a loop is to be cut, are internal errors.
    void recorders() {
        const int share = draw_.below(4);
        const int end = count();
        for (int i = 0; i < end; ++i) {
            const bool isDelay = component(i).isDelay();
            const bool mustSend = !options_.odd && (isDelay || component(i).type == code::kSplitter);
            if (isDelay && component(i).sends) continue;
            for (int port = 1; port <= (isDelay ? 1 : outputsOf(i)); ++port) {
                if (draw_.below(4) > share && !mustSend) continue;
                addRow(draw_.oneIn(4) ? code::kWaterBody : code::kLogger, 0, 0, 0.0F);
                connect(i, port, count() - 1, 1);
            }
        }
    }

    void splits() {
        for (int i = 0; i < count(); ++i) {
            if (component(i).type != code::kSplitter) continue;
            for (int groups = draw_.below(3); groups > 0; --groups) {
                std::vector<std::int32_t> members(static_cast<std::size_t>(draw_.between(1, 3)));
                for (std::int32_t& member : members)
                    member = draw_.anyOf(M().table(Table::WatQuant)).id;
                M().splits.push_back({kFirstId + i, members, draw_.value(-50, 50)});
            }
        }
    }

    void oddities() {
        std::vector<ConnectionRow>& rows = M().connections;
        for (int lone = draw_.below(6); lone > 3; --lone)
            draw_.anyOf(rows).receiverPort = 2;
        if (draw_.oneIn(12)) draw_.anyOf(rows).senderPort = M().BuildTree ? 2 : 3;
        if (draw_.oneIn(25)) draw_.anyOf(rows).receiverPort = 0;
        if (draw_.oneIn(12)) rows.push_back(draw_.anyOf(rows));
        if (draw_.oneIn(12))
            rows.push_back({0, kFirstId + draw_.below(count()), 1, kFirstId + draw_.below(count()), 2});
        if (draw_.oneIn(12)) draw_.anyOf(M().components).id = draw_.anyOf(M().components).id;
        if (draw_.oneIn(20)) M().pots.push_back(draw_.anyOf(M().pots));
        std::vector<NamedSeries>& table = M().series[static_cast<std::size_t>(draw_.below(kTables.size()))];
        if (draw_.oneIn(20)) draw_.anyOf(table).id = draw_.anyOf(table).id;
        if (draw_.oneIn(20)) table.erase(table.begin() + static_cast<std::ptrdiff_t>(draw_.index(table)));
        if (draw_.oneIn(4)) overlap();
    }

    // What a store writes is what a source sends, the weather of a group, or what another store writes.
    void overlap() {
        const auto elements = static_cast<std::size_t>(draw_.below(2));
        for (int more = draw_.between(1, count()); more > 0; --more) {
            const Table state = draw_.oneIn(4) ? Table::WatQual : Table::WatQuant;
            const bool isOfComponents = !draw_.oneIn(4);
            const auto other = isOfComponents ? kOfComponents[draw_.below(std::size(kOfComponents))]
                                              : static_cast<Table>(draw_.below(kTables.size()));
            if (M().table(state).empty() || M().table(other).empty()) continue;
            made_.overlaps.push_back(
                {state, draw_.index(M().table(state)), other, draw_.index(M().table(other)), elements});
        }
    }

    // Tables in any order, but for the two components that are to be first, and for what stops the run, which is last.
    // The tree goes by the last connection of an output, multipliers are looked for along the first.
    void shuffle() {
        if (!isStopping_ && draw_.oneIn(2)) draw_.shuffle(M().components, options_.odd ? 0 : 2);
        if (draw_.oneIn(2)) draw_.shuffle(M().connections, 0);
    }

    void calls() {
        const std::int32_t n = M().nSteps;
        made_.calls = {{1, n}};
        if (draw_.oneIn(3)) {
            const std::int32_t cut = draw_.between(1, n);
            made_.calls = {{1, cut}, {cut + 1, n}};
        }
        // What the process keeps shows in a call after that.
        if (draw_.oneIn(2)) made_.calls.push_back({1, n});
        if (draw_.oddOneIn(8)) made_.calls.push_back({draw_.between(-2, 1), n + draw_.below(3)});
    }

    const RandomOptions& options_;
    const Choices draw_;
    RandomModel made_;
    RandomTables tables_;
    int groups_ = 1;
    int groupsWithReservoirs_ = 0;
    int brands_ = 1;
    std::vector<std::int32_t> types_;  // to choose from
    std::vector<Component> components_;
    bool isStopping_ = false;
};

}  // namespace

Dice seededDice(std::uint32_t seed) {
    const auto numbers = std::make_shared<std::mt19937>(seed);
    return [numbers](int low, int end) {
        return low + static_cast<int>((*numbers)() % static_cast<std::uint32_t>(end - low));
    };
}

RandomModel makeRandomModel(const RandomOptions& options, const Dice& dice) {
    return Maker(options, dice).make();
}

RandomModel makeRandomModel(std::uint32_t seed) {
    const Dice dice = seededDice(seed);
    const bool isLong = dice(0, 5) == 0;
    return makeRandomModel({.mostSteps = isLong ? 150 : 12, .mostComponents = 40, .odd = true}, dice);
}
