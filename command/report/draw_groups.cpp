// The network by its groups: a box for each, or for all that are alike, so that nobody waits for a picture that nobody
// could read.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

#include "carriers.h"
#include "display.h"
#include "draw.h"
#include "markup.h"

namespace kesto {

namespace {

constexpr std::size_t kMostBoxes = 40;
constexpr std::size_t kMostArrows = 200;  // more take Graphviz minutes
constexpr std::size_t kMostTypes = 8;     // that a box names
constexpr int kNoGroup = -1;

using Counts = std::map<std::string_view, std::size_t>;  // components by type

struct Box {
    std::vector<int> groups;  // in their order
    Counts types;
    std::size_t components = 0;
};

class Boxes {
  public:
    explicit Boxes(const Model& model) : model_(model), ofGroup_(model.groups.size() + 1, 0) {
        std::vector<Counts> counts(model.groups.size() + 1);
        for (const Component& component : model.components) {
            ++counts[slotOf(component.group)][component.type->name];
        }
        const auto used = static_cast<std::size_t>(
            std::count_if(counts.begin(), counts.end(), [](const Counts& one) { return !one.empty(); }));
        std::map<Counts, std::size_t> alike;
        for (std::size_t slot = 0; slot < counts.size(); ++slot) {
            const bool isOfNone = slot == slotOf(kNoGroup);
            if (counts[slot].empty()) continue;
            std::size_t box = boxes_.size();
            if (used > kMostBoxes && !isOfNone) box = alike.emplace(counts[slot], box).first->second;
            if (box == boxes_.size()) boxes_.emplace_back();
            add(boxes_[box], isOfNone ? kNoGroup : static_cast<int>(slot), counts[slot]);
        }
        mergeSmall();
        for (std::size_t box = 0; box < boxes_.size(); ++box) {
            for (const int group : boxes_[box].groups) {
                ofGroup_[slotOf(group)] = box;
            }
        }
    }

    const std::vector<Box>& all() const { return boxes_; }
    std::size_t of(const Component& component) const { return ofGroup_[slotOf(component.group)]; }

    std::string nameOf(const Box& box) const {
        const int first = box.groups.front();
        const std::string name = first == kNoGroup ? "without a group" : model_.groups[at(first)].name;
        if (box.groups.size() == 1) return name;
        return fmt::format("{} and {} {}", name, withThousands(box.groups.size() - 1),
                           isMixed(box) ? "others" : "alike");
    }

  private:
    std::size_t slotOf(int group) const { return group < 0 ? model_.groups.size() : at(group); }

    static void add(Box& box, int group, const Counts& counts) {
        box.groups.push_back(group);
        for (const auto& [type, count] : counts) {
            box.types[type] += count;
            box.components += count;
        }
    }

    bool isMixed(const Box& box) const { return &box == &boxes_.back() && isLastMixed_; }

    // The boxes with most components stay, the others become one.
    void mergeSmall() {
        if (boxes_.size() <= kMostBoxes) return;
        std::stable_sort(boxes_.begin(), boxes_.end(),
                         [](const Box& a, const Box& b) { return a.components > b.components; });
        Box rest;
        for (std::size_t i = kMostBoxes - 1; i < boxes_.size(); ++i) {
            for (const auto& [type, count] : boxes_[i].types) {
                rest.types[type] += count;
            }
            rest.components += boxes_[i].components;
            rest.groups.insert(rest.groups.end(), boxes_[i].groups.begin(), boxes_[i].groups.end());
        }
        boxes_.resize(kMostBoxes - 1);
        boxes_.push_back(std::move(rest));
        isLastMixed_ = true;
    }

    const Model& model_;
    std::vector<Box> boxes_;
    std::vector<std::size_t> ofGroup_;
    bool isLastMixed_ = false;
};

std::string boxText(std::size_t index, const std::string& name, const Box& box) {
    std::vector<std::pair<std::size_t, std::string_view>> types;
    for (const auto& [type, count] : box.types) {
        types.emplace_back(count, type);
    }
    std::stable_sort(types.begin(), types.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    std::string lines;
    for (std::size_t i = 0; i < std::min(types.size(), kMostTypes); ++i) {
        lines += fmt::format("<br/><font point-size=\"9\" color=\"#555555\">{} \u00d7 {}</font>",
                             withThousands(types[i].first), escapeMarkup(types[i].second));
    }
    if (types.size() > kMostTypes) {
        lines += fmt::format("<br/><font point-size=\"9\" color=\"#555555\">and {} other types</font>",
                             types.size() - kMostTypes);
    }
    return fmt::format(
        "b{} [label=<<table border=\"1\" cellborder=\"0\" cellspacing=\"0\" cellpadding=\"6\" color=\"#666666\" "
        "bgcolor=\"#f4f6f8\" style=\"rounded\"><tr><td><b>{}</b>{}</td></tr></table>>, tooltip=\"{}\"];\n",
        index, escapeMarkup(name), lines, escapeMarkup(name));
}

struct Arrow {
    std::size_t from, to;
    bool isDemand;
    std::size_t connections;
};

// Between two boxes one arrow for water and one for demands, with how many connections it stands for.
std::vector<Arrow> arrowsOf(const Model& model, const Boxes& boxes) {
    const Carriers carriers(model, Network(model));
    std::map<std::array<std::size_t, 3>, std::size_t> counts;
    for (const Connection& connection : model.connections) {
        const std::size_t from = boxes.of(model.components[at(connection.from)]);
        const std::size_t to = boxes.of(model.components[at(connection.to)]);
        const bool isDemand = carriers.ofOutput(connection.from, connection.fromPort) == Carries::demand;
        if (from != to) ++counts[{from, to, isDemand ? 1U : 0U}];
    }
    std::vector<Arrow> arrows;
    for (const auto& [key, count] : counts) {
        arrows.push_back({key[0], key[1], key[2] == 1, count});
    }
    std::stable_sort(arrows.begin(), arrows.end(),
                     [](const Arrow& a, const Arrow& b) { return a.connections > b.connections; });
    return arrows;
}

std::string arrowText(const Arrow& arrow) {
    return fmt::format("b{} -> b{} [label=\" {}\"{}];\n", arrow.from, arrow.to, withThousands(arrow.connections),
                       arrow.isDemand ? ", style=dashed, color=\"#b45f06\"" : "");
}

}  // namespace

std::string groupsDot(const Model& model) {
    std::string text =
        "digraph groups {\n"
        "rankdir=LR; bgcolor=\"#ffffff\"; ranksep=0.9; nodesep=0.3; fontname=\"DejaVu Sans\"; fontsize=10;\n"
        "node [shape=plain, fontname=\"DejaVu Sans\", fontsize=11];\n"
        "edge [color=\"#3d85c6\", penwidth=1.4, arrowsize=0.7, fontname=\"DejaVu Sans\", fontsize=9];\n";
    const Boxes boxes(model);
    const std::vector<Arrow> arrows = arrowsOf(model, boxes);
    const std::size_t drawn = std::min(arrows.size(), kMostArrows);
    text += fmt::format(
        "label=\"{} components by group; solid: water, dashed: demand, with the number of connections{}\"; "
        "labelloc=b;\n",
        withThousands(model.components.size()),
        drawn < arrows.size() ? fmt::format("; {} arrows of fewer are left out", withThousands(arrows.size() - drawn))
                              : "");
    for (std::size_t i = 0; i < boxes.all().size(); ++i) {
        text += boxText(i, boxes.nameOf(boxes.all()[i]), boxes.all()[i]);
    }
    for (std::size_t i = 0; i < drawn; ++i) {
        text += arrowText(arrows[i]);
    }
    return text + "}\n";
}

}  // namespace kesto
