// Figures derived from what a run recorded.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "account.h"
#include "figure_list.h"
#include "money.h"

namespace kesto {

inline constexpr double kNoticed = 1e-6;  // of a demand: to lack less is rounding

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
    std::string unitOf(const Figure& figure) const;  // "L", "EUR/a"; of money without a currency "money/a"
    const Figure* find(int component, std::string_view name) const;
};

// `baseline` is what the network costs in the run that this one is compared with; null: there is none.
Figures figuresOf(const Recorded& recorded, const ComponentSums& sums, const WaterPaths& paths, const Account& account,
                  const Money& money, const NetworkCosts* baseline, bool hasComponents);

// What stores and sources served, and what it costs, for people; a CSV file; its name is returned.
std::string toText(const Figures& figures, Detail detail);
std::string writeFiguresCsv(const Figures& figures, const std::string& folder);

}  // namespace kesto
