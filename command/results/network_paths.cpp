#include "network_paths.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

#include "path_bypass.h"
#include "path_loops.h"
#include "path_nodes.h"
#include "path_reduction.h"

namespace kesto {

namespace {

constexpr std::size_t kNamed = 4;  // places of one kind that have a node each
constexpr std::array<std::string_view, 5> kKinds{"source", "store", "works", "use", "sink"};

// Where water crosses the border of the network, by the kinds of the account.
struct Crossing {
    AccountKind kind;
    std::string_view label;  // of all places, or before the name of one
    bool isNamed;            // few places have a node each
};
constexpr std::array<Crossing, 14> kCrossings{{
    {AccountKind::rain, "Rain", true},
    {AccountKind::drawn, "Ground and rivers", false},
    {AccountKind::mains, "Mains", false},
    {AccountKind::waterBody, "Water bodies", true},
    {AccountKind::openEnd, "Open ends", true},
    {AccountKind::used, "Used up", false},
    {AccountKind::evaporated, "Evaporated", false},
    {AccountKind::infiltrated, "Infiltrated", false},
    {AccountKind::lost, "Lost", false},
    {AccountKind::storage, "Storage", false},
    {AccountKind::notRecorded, "Not recorded", false},
    {AccountKind::created, "From nothing", false},
    {AccountKind::destroyed, "Vanished", false},
    {AccountKind::unexplained, "Unexplained", false},
}};

const Crossing& crossingOf(AccountKind kind) {
    return *std::find_if(kCrossings.begin(), kCrossings.end(), [&](const Crossing& one) { return one.kind == kind; });
}

// The account, each entry at the node of its component.
class Paths {
  public:
    Paths(const Recorded& recorded, const ComponentSums& sums, const WaterPaths& paths, const Account& account)
        : recorded_(recorded), sums_(sums), paths_(paths), account_(account) {}

    NetworkPaths take() {
        if (recorded_.isWhole()) {
            of_ = nodesOf(recorded_, paths_);
        } else {
            of_.nodes.push_back({"the network", PathKind::works, 0, recorded_.components()});
            of_.of.assign(static_cast<std::size_t>(recorded_.components()), 0);
        }
        nodes_ = of_.nodes;
        countPlaces();
        collect();
        const bool isFinite =
            std::all_of(edges_.begin(), edges_.end(), [](const PathEdge& edge) { return std::isfinite(edge.litres); });
        if (!isFinite) return {};
        return reduced(std::move(nodes_), edges_);
    }

  private:
    void countPlaces() {
        for (const AccountEntry& entry : account_.entries) {
            places_[{entry.isIn, entry.kind}].insert(entry.component);
        }
    }

    int inside(int component) const {
        const int node = of_.of[at(component)];
        return node == kPassed ? -1 - component : node;
    }

    int border(bool isIn, AccountKind kind, int place) {
        const Crossing& crossing = crossingOf(kind);
        const auto& places = places_[{isIn, kind}];
        const bool isOne = crossing.isNamed && place != kOutside && places.size() <= kNamed;
        std::string label(crossing.label);
        if (isOne) {
            const std::string& name = recorded_.component(place).name;
            label = kind == AccountKind::rain ? "Rain on " + name : name;
        } else if (kind == AccountKind::rain && place != kOutside && isOfSeveralTypes(places)) {
            label = "Rain on " + pluralOf(recorded_.type(place));
        } else if (kind == AccountKind::storage) {
            label = isIn ? "From storage" : "Stored";
        }
        const auto [known, isNew] = borders_.emplace(std::pair(isIn, label), static_cast<int>(nodes_.size()));
        if (isNew) nodes_.push_back({label, isIn ? PathKind::source : PathKind::sink, 0, 0});
        if (place != kOutside && counted_.insert({known->second, place}).second) ++nodes_[at(known->second)].components;
        return known->second;
    }

    bool isOfSeveralTypes(const std::set<int>& places) const {
        return std::any_of(places.begin(), places.end(),
                           [&](int place) { return &recorded_.type(place) != &recorded_.type(*places.begin()); });
    }

    // A place beside the store, which is passed through.
    int beside(int store) const { return -1 - recorded_.components() - store; }

    // What comes in as less than nothing goes out, and the reverse.
    void cross(bool isIn, AccountKind in, AccountKind out, int node, double litres, int place) {
        if (litres == 0) return;
        const bool comesIn = isIn == (litres > 0);
        const int outside = border(comesIn, comesIn ? in : out, place);
        comesIn ? edges_.push_back({outside, node, std::abs(litres)})
                : edges_.push_back({node, outside, std::abs(litres)});
    }

    // Some of it, from this node.
    void addMovement(const Movement& movement, const Bypass& bypass, int from, double litres) {
        const auto receiver = [&] { return bypass.isEntered(movement) ? beside(movement.to) : inside(movement.to); };
        const AccountKind kind = kindOf(movement.border);
        if (movement.from == kOutside) return cross(true, kind, kind, receiver(), litres, movement.place);
        if (movement.to == kOutside) return cross(false, kind, kind, from, litres, movement.place);
        edges_.push_back({from, receiver(), litres});
    }

    void collect() {
        const Bypass bypass(recorded_, paths_);
        for (const Movement& movement : paths_.movements()) {
            const double share = bypass.share(movement);
            if (share > 0) addMovement(movement, bypass, beside(movement.from), share * movement.litres);
            addMovement(movement, bypass, movement.from == kOutside ? kOutside : inside(movement.from),
                        movement.litres - share * movement.litres);
        }
        for (const Creation& creation : paths_.creations()) {
            cross(true, AccountKind::created, AccountKind::destroyed, inside(creation.component), creation.litres,
                  creation.component);
        }
        for (int i = 0; i < recorded_.components(); ++i) {
            const auto own = [&](bool isIn, AccountKind kind, Term term) {
                cross(isIn, kind, kind, inside(i), sums_.of(i).ofAll(term), i);
            };
            own(true, AccountKind::rain, Term::rain);
            own(true, AccountKind::drawn, Term::drawn);
            own(false, AccountKind::evaporated, Term::evaporated);
            own(false, AccountKind::infiltrated, Term::infiltrated);
            own(false, AccountKind::lost, Term::lost);
            cross(false, AccountKind::storage, AccountKind::storage, inside(i), paths_.stored(i), i);
        }
    }

    const Recorded& recorded_;
    const ComponentSums& sums_;
    const WaterPaths& paths_;
    const Account& account_;
    ComponentNodes of_;
    std::vector<PathNode> nodes_;
    std::map<std::pair<bool, AccountKind>, std::set<int>> places_;
    std::map<std::pair<bool, std::string>, int> borders_;
    std::set<std::pair<int, int>> counted_;
    std::vector<PathEdge> edges_;
};

}  // namespace

std::string_view toText(PathKind kind) {
    return kKinds[static_cast<std::size_t>(kind)];
}

NetworkPaths pathsOf(const Recorded& recorded, const ComponentSums& sums, const WaterPaths& waterPaths,
                     const Account& account) {
    NetworkPaths paths = Paths(recorded, sums, waterPaths, account).take();
    cutLoops(paths);
    std::vector<double> in(paths.nodes.size(), 0), out(paths.nodes.size(), 0);
    for (const PathLink& link : paths.links) {
        out[link.from] += link.litres;
        in[link.to] += link.litres;
    }
    for (std::size_t i = 0; i < paths.nodes.size(); ++i) {
        paths.nodes[i].litres = std::max(in[i], out[i]);
    }
    return paths;
}

}  // namespace kesto
