#include "path_nodes.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#include "fields.h"

namespace kesto {

namespace {

constexpr std::size_t kFew = 6;  // nodes of a kind

std::optional<PathKind> kindOf(const Type& type, bool isGivenWater) {
    switch (fieldOf(type)) {
        case Field::users:
            return PathKind::use;
        case Field::stores:
            return PathKind::store;
        case Field::treatment:
        case Field::supply:
            return PathKind::works;
        case Field::surfaces:  // one that is watered uses water
            return type.balance.wiring.asksBy > 0 && isGivenWater ? std::optional(PathKind::use) : std::nullopt;
        case Field::links:
        case Field::routing:
        case Field::quality:
        case Field::energy:
            break;
    }
    return std::nullopt;
}

class Nodes {
  public:
    Nodes(const Recorded& recorded, const WaterPaths& paths)
        : recorded_(recorded), paths_(paths), kinds_(static_cast<std::size_t>(recorded.components())) {
        std::vector<bool> isGivenWater(kinds_.size(), false);
        for (const Movement& movement : paths.movements()) {
            if (movement.to != kOutside && movement.litres != 0) isGivenWater[at(movement.to)] = true;
        }
        for (std::size_t i = 0; i < kinds_.size(); ++i) {
            kinds_[i] = kindOf(recorded.type(static_cast<int>(i)), isGivenWater[i]);
        }
        findGivers();
    }

    ComponentNodes take() {
        result_.of.assign(kinds_.size(), kPassed);
        for (const PathKind kind : {PathKind::use, PathKind::store, PathKind::works}) {
            std::vector<int> members;
            for (std::size_t i = 0; i < kinds_.size(); ++i) {
                if (kinds_[i] == kind) members.push_back(static_cast<int>(i));
            }
            if (!members.empty()) addNodes(kind, members);
        }
        return std::move(result_);
    }

  private:
    enum class By { component, group, type };
    using Key = std::tuple<int, bool>;  // component, group or type, and whether its water is used again

    // Users whose water reaches a store or works: it may be used again.
    void findGivers() {
        std::vector<std::vector<int>> senders(kinds_.size());
        for (const Movement& movement : paths_.movements()) {
            const bool isInside = movement.from != kOutside && movement.to != kOutside;
            if (isInside && movement.litres > 0) senders[at(movement.to)].push_back(movement.from);
        }
        gives_.assign(kinds_.size(), false);
        std::vector<int> reached;
        std::vector<bool> isKnown(kinds_.size(), false);
        for (std::size_t i = 0; i < kinds_.size(); ++i) {
            if (kinds_[i] == PathKind::store || kinds_[i] == PathKind::works) reached.push_back(static_cast<int>(i));
        }
        for (std::size_t next = 0; next < reached.size(); ++next) {
            for (const int sender : senders[at(reached[next])]) {
                if (kinds_[at(sender)] == PathKind::use) gives_[at(sender)] = true;
                if (kinds_[at(sender)] || isKnown[at(sender)]) continue;
                isKnown[at(sender)] = true;
                reached.push_back(sender);
            }
        }
    }

    Key keyOf(int component, By by) const {
        const bool gives = gives_[at(component)];
        if (by == By::component) return {component, gives};
        if (by == By::group) return {std::max(recorded_.component(component).group, -1), gives};
        return {recorded_.type(component).codes.front(), gives};
    }

    static bool areFew(const std::map<Key, std::vector<int>>& sets) { return sets.size() <= kFew; }

    std::map<Key, std::vector<int>> setsOf(const std::vector<int>& members, By by) const {
        std::map<Key, std::vector<int>> sets;
        for (const int component : members) {
            sets[keyOf(component, by)].push_back(component);
        }
        return sets;
    }

    // A person thinks of what uses water by where it is, of stores and works one by one.
    void addNodes(PathKind kind, const std::vector<int>& members) {
        By by = kind == PathKind::use ? By::group : By::component;
        if (by == By::component && members.size() > kFew) by = By::group;
        auto sets = setsOf(members, by);
        if (!areFew(sets)) sets = setsOf(members, by = By::type);
        std::map<std::string, int> labels;
        for (const auto& [key, set] : sets) {
            ++labels[labelOf(set, by)];
        }
        for (const auto& [key, set] : sets) {
            std::string label = labelOf(set, by);
            if (labels[label] > 1) label = namesOf(set, label);
            for (const int component : set) {
                result_.of[at(component)] = static_cast<int>(result_.nodes.size());
            }
            result_.nodes.push_back({std::move(label), kind, 0, static_cast<int>(set.size())});
        }
    }

    std::string labelOf(const std::vector<int>& set, By by) const {
        const Component& first = recorded_.component(set.front());
        if (set.size() == 1) return first.name;
        if (by == By::group && first.group >= 0) return recorded_.model().groups[at(first.group)].name;
        return pluralOf(*first.type);
    }

    // Of two sets of one group.
    std::string namesOf(const std::vector<int>& set, const std::string& label) const {
        constexpr std::size_t kNamed = 3;
        if (set.size() > kNamed) return label + (gives_[at(set.front())] ? " (used again)" : " (used once)");
        std::string names;
        for (const int component : set) {
            names += (names.empty() ? "" : ", ") + recorded_.component(component).name;
        }
        return names;
    }

    const Recorded& recorded_;
    const WaterPaths& paths_;
    std::vector<std::optional<PathKind>> kinds_;
    std::vector<bool> gives_;
    ComponentNodes result_;
};

}  // namespace

ComponentNodes nodesOf(const Recorded& recorded, const WaterPaths& paths) {
    return Nodes(recorded, paths).take();
}

std::string pluralOf(const Type& type) {
    std::string text(type.name);
    std::replace(text.begin(), text.end(), '_', ' ');
    if (text.ends_with('y') && !text.ends_with("ay")) return text.substr(0, text.size() - 1) + "ies";
    return text.ends_with("works") ? text : text + "s";
}

}  // namespace kesto
