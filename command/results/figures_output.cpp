#include <fmt/format.h>

#include <cmath>

#include "csv_file.h"
#include "figures.h"
#include "files.h"

namespace kesto {

namespace {

constexpr std::size_t kManyStores = 40;

std::string dayOrNothing(const std::optional<Day>& day) {
    return day ? toText(*day) : "";
}

std::string serviceOf(const Figures& figures, const Figure& demand) {
    const auto value = [&](std::string_view name) { return figures.find(demand.component, name); };
    const double unmet = value("unmet")->value;
    if (std::isnan(demand.value) || std::isnan(unmet)) return "not known";
    if (demand.value == 0) return "nothing was asked of it";
    std::string text = fmt::format("{:.1f} %: {:.1f} L of {:.1f} L", 100 * value("reliability_volume")->value,
                                   value("served")->value, demand.value);
    const Figure& longest = *value("longest_shortage");
    if (longest.value > 0) {
        text += fmt::format("; short on {} days, at most {} in a row from {}", value("days_short")->value,
                            longest.value, toText(*longest.from));
    }
    return text;
}

// What the network costs and saves, and what its sources' water costs.
std::string costs(const Figures& figures) {
    std::vector<const Figure*> shown;
    std::size_t width = 0;
    for (const Figure& figure : figures.rows) {
        const FigureOf of = figure.info->of;
        if (of != FigureOf::money && of != FigureOf::savings && of != FigureOf::source) continue;
        shown.push_back(&figure);
        width = std::max(width, figures.nameOf(figure).size());
        if (shown.size() == kManyStores) break;
    }
    std::string text = shown.empty() ? "" : "\nCosts\n";
    for (const Figure* figure : shown) {
        text += fmt::format("  {:<{}}  {:>14} {}\n", figures.nameOf(*figure), width,
                            std::isnan(figure->value) ? "none" : fmt::format("{:.2f}", figure->value),
                            figures.unitOf(*figure));
    }
    return text;
}

std::string services(const Figures& figures) {
    std::vector<const Figure*> demands;
    std::size_t width = 0;
    for (const Figure& figure : figures.rows) {
        if (figure.info != &figureInfo("demand")) continue;
        demands.push_back(&figure);
        width = std::max(width, figures.model->components[at(figure.component)].name.size());
    }
    if (demands.empty()) return {};
    std::string text = "\nServed of what was asked\n";
    for (std::size_t i = 0; i < std::min(demands.size(), kManyStores); ++i) {
        const std::string& name = figures.model->components[at(demands[i]->component)].name;
        text += fmt::format("  {:<{}}  {}\n", name, width, serviceOf(figures, *demands[i]));
    }
    if (demands.size() > kManyStores) text += fmt::format("  and {} more\n", demands.size() - kManyStores);
    return text;
}

}  // namespace

std::string toText(const Figures& figures) {
    return services(figures) + costs(figures);
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
