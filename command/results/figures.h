// Figures derived from what a run recorded.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "account.h"
#include "figure_list.h"

namespace kesto {

struct Figure {
    int component;  // or kOutside: of the network
    const FigureInfo* info;
    double value;  // not a number: there is none, as where nothing was asked
    std::optional<Day> from = std::nullopt, to = std::nullopt;
};

struct Figures {
    const Model* model = nullptr;
    std::vector<Figure> rows;  // the network's, then by component

    std::string nameOf(const Figure& figure) const;  // "tank.served"
    const Figure* find(int component, std::string_view name) const;
};

Figures figuresOf(const Recorded& recorded, const ComponentSums& sums, const WaterPaths& paths, const Account& account);

// What stores and sources served, for people; a CSV file; its name is returned.
std::string toText(const Figures& figures);
std::string writeFiguresCsv(const Figures& figures, const std::string& folder);

}  // namespace kesto
