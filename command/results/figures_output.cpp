#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "csv_file.h"
#include "display.h"
#include "figures.h"
#include "files.h"

namespace kesto {

namespace {

constexpr std::size_t kServicesInBrief = 3;
constexpr std::size_t kCostsInBrief = 6;

std::string dayOrNothing(const std::optional<Day>& day) {
    return day ? toText(*day) : "";
}

std::string serviceOf(const Figures& figures, const Figure& demand) {
    const auto value = [&](std::string_view name) { return figures.find(demand.component, name); };
    const double unmet = value("unmet")->value;
    if (std::isnan(demand.value) || std::isnan(unmet)) return "not known";
    if (demand.value == 0) return "nothing was asked of it";
    const ShownUnit unit = shownUnit("L", demand.value);
    std::string text =
        fmt::format("{:.1f} %: {} of {} {}", 100 * value("reliability_volume")->value,
                    shownNumber(value("served")->value, unit), shownNumber(demand.value, unit), unit.unit);
    const Figure& longest = *value("longest_shortage");
    if (longest.value > 0) {
        text += fmt::format("; short on {} days, {} in a row from {}", value("days_short")->value, longest.value,
                            toText(*longest.from));
    }
    return text;
}

// What the network costs and saves, and in full what its components do.
bool isCost(const Figure& figure, Detail detail) {
    const FigureOf of = figure.info->of;
    if (of == FigureOf::money || of == FigureOf::savings) return true;
    return detail == Detail::full && (of == FigureOf::source || of == FigureOf::capital);
}

// What decisions are made by; the others follow in their own order.
std::size_t rankOf(const Figure* figure) {
    constexpr std::string_view kFirst[] = {"capital",     "running_cost",      "yearly_cost",
                                           "saved_mains", "cost_per_m3_saved", "payback"};
    return static_cast<std::size_t>(std::find(std::begin(kFirst), std::end(kFirst), figure->info->name) -
                                    std::begin(kFirst));
}

std::string costs(const Figures& figures, Detail detail) {
    std::vector<const Figure*> shownOnes;
    for (const Figure& figure : figures.rows) {
        if (isCost(figure, detail)) shownOnes.push_back(&figure);
    }
    if (shownOnes.empty()) return {};
    if (detail == Detail::brief) {
        std::stable_sort(shownOnes.begin(), shownOnes.end(),
                         [](const Figure* a, const Figure* b) { return rankOf(a) < rankOf(b); });
        shownOnes.resize(std::min(shownOnes.size(), kCostsInBrief));
    }
    std::vector<std::vector<std::string>> rows;
    for (const Figure* figure : shownOnes) {
        const std::string unit = figures.unitOf(*figure);
        const bool isMoney = figure->info->unit.starts_with("money");
        const ShownUnit best = isMoney ? ShownUnit{unit, 1, 2} : shownUnit(unit, std::abs(figure->value));
        rows.push_back({figures.nameOf(*figure), std::string(best.unit),
                        std::isnan(figure->value) ? "none" : shownNumber(figure->value, best)});
    }
    return "\nCosts\n" + alignedRows(rows);
}

// In brief, those that were served least.
std::string services(const Figures& figures, Detail detail) {
    std::vector<const Figure*> demands;
    for (const Figure& figure : figures.rows) {
        if (figure.info == &figureInfo("demand")) demands.push_back(&figure);
    }
    if (demands.empty()) return {};
    std::string text = "\nServed of what was asked\n";
    if (detail == Detail::brief && demands.size() > kServicesInBrief) {
        text =
            fmt::format("\nServed least of what was asked, of {} stores and sources\n", withThousands(demands.size()));
        const auto served = [&](const Figure* demand) {
            const double share = figures.find(demand->component, "reliability_volume")->value;
            return std::isnan(share) ? std::numeric_limits<double>::infinity() : share;
        };
        std::stable_sort(demands.begin(), demands.end(),
                         [&](const Figure* a, const Figure* b) { return served(a) < served(b); });
        demands.resize(kServicesInBrief);
    }
    std::vector<std::string> names;
    std::size_t width = 0;
    for (const Figure* demand : demands) {
        names.push_back(shownName(figures.model->components[at(demand->component)].name, detail));
        width = std::max(width, names.back().size());
    }
    for (std::size_t i = 0; i < demands.size(); ++i) {
        text += fmt::format("  {:<{}}  {}\n", names[i], width, serviceOf(figures, *demands[i]));
    }
    return text;
}

}  // namespace

std::string toText(const Figures& figures, Detail detail) {
    return services(figures, detail) + costs(figures, detail);
}

std::string writeFiguresCsv(const Figures& figures, const std::string& folder) {
    std::string text = "figure,value,unit,from,to\n";
    for (const Figure& figure : figures.rows) {
        text += fmt::format("{},{},{},{},{}\n", csvCell(figures.nameOf(figure)),
                            std::isnan(figure.value) ? "" : fmt::format("{}", figure.value), figures.unitOf(figure),
                            dayOrNothing(figure.from), dayOrNothing(figure.to));
    }
    const std::string path = joined(folder, "figures.csv");
    writeFile(path, text);
    return path;
}

}  // namespace kesto
