#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "comparison.h"
#include "csv_file.h"
#include "shown_unit.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

constexpr double kLeastWritten = 1e-6;  // in full

ShownUnit unitOf(const ComparedFigure& figure) {
    double largest = 0;
    for (const double value : figure.values) {
        if (std::isfinite(value)) largest = std::max(largest, std::abs(value));
    }
    return shownUnit(figure.unit, largest);
}

// With the decimals of its row, but never so few that an amount looks like nothing.
std::string shownIn(double value, const ShownUnit& shown) {
    const double size = std::abs(value * shown.factor);
    const double inLastDigit = size * std::pow(10, shown.decimals);
    if (!(size > 0) || inLastDigit >= 10 || inLastDigit == std::round(inLastDigit)) return shownNumber(value, shown);
    if (size < kLeastWritten) return fmt::format("{:.2e}", value * shown.factor);
    ShownUnit finer = shown;
    finer.decimals = std::max(shown.decimals, 1 - static_cast<int>(std::floor(std::log10(size))));
    return shownNumber(value, finer);
}

// Of the first run's; fractions differ by percentage points instead.
double percentOf(const ComparedFigure& figure, std::size_t run) {
    return 100 * (figure.values[run] - figure.values[0]) / std::abs(figure.values[0]);
}

std::string change(const ComparedFigure& figure, std::size_t run, const ShownUnit& shown) {
    const double difference = figure.values[run] - figure.values[0];
    if (std::isnan(difference)) return "";
    if (difference == 0) return "=";
    std::string text = (difference > 0 ? "+" : "") + shownIn(difference, shown);
    const double percent = percentOf(figure, run);
    if (figure.unit != "-" && std::isfinite(percent)) text += fmt::format(" ({:+.1f} %)", percent);
    return text;
}

using Row = std::vector<std::string>;

std::string savingsText(const Comparison& comparison) {
    if (comparison.savings.empty()) return {};
    Row heading{"", ""};
    for (std::size_t i = 1; i < comparison.runs.size(); ++i) {
        heading.push_back(std::to_string(i + 1));
    }
    std::vector<Row> rows{heading};
    for (const ComparedFigure& figure : comparison.savings) {
        const ShownUnit shown = unitOf(figure);
        Row row{figure.name, std::string(shown.unit)};
        for (std::size_t i = 1; i < figure.values.size(); ++i) {
            row.push_back(shownIn(figure.values[i], shown));
        }
        rows.push_back(row);
    }
    return "\nAgainst 1\n" + alignedRows(rows);
}

}  // namespace

std::string toText(const Comparison& comparison) {
    std::string text;
    Row heading{"", ""};
    for (std::size_t i = 0; i < comparison.runs.size(); ++i) {
        const ComparedRun& run = comparison.runs[i];
        text += fmt::format("{:>3}  {}{}{}", i + 1, run.name, run.title.empty() ? "" : ": ", run.title);
        if (!run.start.empty()) text += fmt::format(", {} to {}", run.start, run.end);
        if (!run.folder.empty() && !run.set.empty())
            text += "; with " + listOf({run.set.begin(), run.set.end()}, "and");
        text += '\n';
        heading.push_back(std::to_string(i + 1));
        if (i > 0) heading.push_back(fmt::format("{} - 1", i + 1));
    }
    std::vector<Row> rows{heading};
    for (const ComparedFigure& figure : comparison.figures) {
        const ShownUnit shown = unitOf(figure);
        Row row{figure.name, std::string(shown.unit)};
        for (std::size_t i = 0; i < figure.values.size(); ++i) {
            row.push_back(shownIn(figure.values[i], shown));
            if (i > 0) row.push_back(change(figure, i, shown));
        }
        rows.push_back(row);
    }
    text += comparison.figures.empty() ? "\nNo figure differs.\n" : "\n" + alignedRows(rows);
    text += savingsText(comparison);
    if (comparison.alike > 0 && !comparison.figures.empty()) {
        text += fmt::format("\n{} figures are the same in all runs; --all shows them.\n", comparison.alike);
    }
    return text;
}

// What is not finite becomes null.
std::string toJson(const Comparison& comparison) {
    Json runs = Json::array(), figures = Json::array();
    for (const ComparedRun& run : comparison.runs) {
        runs.push_back({{"name", run.name},
                        {"title", run.title},
                        {"model_file", run.model},
                        {"start", run.start},
                        {"end", run.end},
                        {"set", run.set},
                        {"outcome", run.outcome}});
    }
    for (const ComparedFigure& figure : comparison.figures) {
        std::vector<double> differences, percents;
        for (std::size_t i = 0; i < figure.values.size(); ++i) {
            differences.push_back(figure.values[i] - figure.values[0]);
            percents.push_back(percentOf(figure, i));
        }
        figures.push_back({{"name", figure.name},
                           {"unit", figure.unit},
                           {"values", figure.values},
                           {"differences", differences},
                           {"percent", percents}});
    }
    Json savings = Json::array();
    for (const ComparedFigure& figure : comparison.savings) {
        savings.push_back({{"name", figure.name}, {"unit", figure.unit}, {"values", figure.values}});
    }
    const Json all{{"runs", runs}, {"figures", figures}, {"savings", savings}, {"warnings", comparison.warnings}};
    return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string toCsv(const Comparison& comparison) {
    const auto cell = [](double value) { return std::isfinite(value) ? fmt::format("{}", value) : std::string(); };
    std::string text = "figure,unit";
    for (std::size_t i = 0; i < comparison.runs.size(); ++i) {
        const std::string& name = comparison.runs[i].name;
        text += "," + csvCell(name);
        if (i > 0) text += "," + csvCell(name + ": difference") + "," + csvCell(name + ": difference [%]");
    }
    text += '\n';
    for (const ComparedFigure& figure : comparison.figures) {
        text += csvCell(figure.name) + "," + figure.unit;
        for (std::size_t i = 0; i < figure.values.size(); ++i) {
            text += "," + cell(figure.values[i]);
            if (i > 0) text += "," + cell(figure.values[i] - figure.values[0]) + "," + cell(percentOf(figure, i));
        }
        text += '\n';
    }
    for (const ComparedFigure& figure : comparison.savings) {
        text += figure.name + "," + csvCell(figure.unit) + ",";
        for (std::size_t i = 1; i < figure.values.size(); ++i) {
            text += "," + cell(figure.values[i]) + ",,";
        }
        text += '\n';
    }
    return text;
}

}  // namespace kesto
