// What runs save against the first of them, from the figures that they have.
#include <algorithm>
#include <cmath>

#include "calendar.h"
#include "comparison.h"
#include "money.h"

namespace kesto {

namespace {

// Nothing where the run has no such figure, or no value of it.
std::optional<double> figureOf(const ComparedRun& run, std::string_view name) {
    for (const auto& [known, value] : run.figures) {
        if (known == name && std::isfinite(value)) return value;
    }
    return std::nullopt;
}

double yearsOf(const ComparedRun& run) {
    const auto first = parseDay(run.start), last = parseDay(run.end);
    return first && last ? static_cast<double>(*last - *first + 1) / kDaysPerYear : kNoValue;
}

NetworkCosts costsOf(const ComparedRun& run) {
    NetworkCosts costs;
    costs.years = yearsOf(run);
    costs.mainsLitres = figureOf(run, "network.mains").value_or(kNoValue);
    costs.energy = figureOf(run, "network.energy");
    costs.capital = figureOf(run, "network.capital");
    costs.annuity = figureOf(run, "network.annuity");
    costs.mains = figureOf(run, "network.mains_cost");
    costs.sewage = figureOf(run, "network.sewage_cost");
    costs.energyCost = figureOf(run, "network.energy_cost");
    costs.operation = figureOf(run, "network.operation_cost");
    return costs;
}

// "EUR/m3" of a currency that is told by a figure of the runs.
std::string unitOf(const std::vector<ComparedRun>& runs, std::string_view per) {
    for (const ComparedRun& run : runs) {
        if (const std::string currency = currencyOf(run); !currency.empty()) return currency + std::string(per);
    }
    return "money" + std::string(per);
}

}  // namespace

std::string currencyOf(const ComparedRun& run) {
    constexpr std::string_view kYearly = "/a";
    for (std::size_t i = 0; i < run.figures.size(); ++i) {
        const std::string& unit = run.units[i];
        const bool isMoney = run.figures[i].first == "network.yearly_cost" && unit.ends_with(kYearly);
        if (isMoney) return unit.substr(0, unit.size() - kYearly.size());
    }
    return {};
}

std::vector<ComparedFigure> savingsOf(const std::vector<ComparedRun>& runs) {
    const auto row = [&](std::string_view name, std::string unit) {
        return ComparedFigure{std::string(name), std::move(unit), std::vector<double>(runs.size(), kNoValue)};
    };
    std::vector<ComparedFigure> rows{row("saved_mains", "L"), row("saved_energy", "kWh"),
                                     row("saved_running_cost", unitOf(runs, "/a")),
                                     row("cost_per_m3_saved", unitOf(runs, "/m3")), row("payback", "a")};
    if (runs.empty()) return {};
    const NetworkCosts first = costsOf(runs.front());
    for (std::size_t i = 1; i < runs.size(); ++i) {
        const NetworkCosts costs = costsOf(runs[i]);
        if (costs.years != first.years && !std::isnan(costs.years)) continue;
        const Savings savings = savingsOf(costs, first);
        rows[0].values[i] = savings.mains;
        rows[1].values[i] = savings.energy.value_or(kNoValue);
        if (currencyOf(runs[i]) != currencyOf(runs.front())) continue;
        rows[2].values[i] = savings.running.value_or(kNoValue);
        rows[3].values[i] = savings.costPerM3.value_or(kNoValue);
        rows[4].values[i] = savings.payback.value_or(kNoValue);
    }
    // What nobody has, or nobody saves, is not told.
    std::erase_if(rows, [](const ComparedFigure& figure) {
        return std::all_of(figure.values.begin(), figure.values.end(),
                           [](double value) { return std::isnan(value) || value == 0; });
    });
    return rows;
}

}  // namespace kesto
