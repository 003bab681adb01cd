#include "compare_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "compare_parts.h"
#include "figure_list.h"
#include "files.h"
#include "report.h"

namespace kesto {

namespace {

constexpr std::size_t kMostFigures = 1000;
constexpr std::string_view kNetwork = "network.";
constexpr std::string_view kAccount = "account.";

Json orNull(double value) {
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

Json numbers(const std::vector<double>& values) {
    Json list = Json::array();
    for (const double value : values) {
        list.push_back(orNull(value));
    }
    return list;
}

// Without the folders that they stand in, as long as these tell nobody apart.
std::vector<std::string> namesOf(const std::vector<ComparedRun>& runs) {
    std::vector<std::string> whole, names;
    for (const ComparedRun& run : runs) {
        whole.push_back(run.name);
        names.push_back(nameOf(pathOf(run.name).filename()));
    }
    const std::set<std::string> different(names.begin(), names.end());
    return different.size() < names.size() || different.contains("") ? whole : names;
}

Json runsOf(const Comparison& comparison) {
    Json runs = Json::array();
    const std::vector<std::string> names = namesOf(comparison.runs);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const ComparedRun& run = comparison.runs[i];
        Json row{{"name", names[i]}, {"title", run.title}, {"outcome", run.outcome}};
        if (!run.start.empty()) row.update({{"start", run.start}, {"end", run.end}});
        if (!run.set.empty()) row["set"] = run.set;
        runs.push_back(std::move(row));
    }
    return runs;
}

// "of what was asked of it": by the part of the name after the component.
std::string_view meaningOf(const std::string& name) {
    const bool ofNetwork = name.starts_with(kNetwork);
    const std::string_view own = std::string_view(name).substr(name.rfind('.') + 1);
    for (const FigureInfo& info : allFigures()) {
        if (info.name == own && isOfNetwork(info.of) == ofNetwork) return info.meaning;
    }
    return {};
}

Json rowOf(const ComparedFigure& figure, std::string_view meaning) {
    Json row{{"name", figure.name}, {"unit", figure.unit}, {"values", numbers(figure.values)}};
    if (!meaning.empty()) row["meaning"] = meaning;
    return row;
}

// The network's and what is saved first, then what differs, months of it last. The account tells the same of the
// network once more.
void addFigures(const Comparison& comparison, Json& page) {
    std::vector<const ComparedFigure*> figures;
    for (const ComparedFigure& figure : comparison.figures) {
        if (!figure.name.starts_with(kAccount)) figures.push_back(&figure);
    }
    const auto rank = [](const ComparedFigure* figure) {
        if (figure->name.starts_with(kNetwork)) return 0;
        if (!figure->differs()) return 3;
        return figure->name.find(".unmet_") == std::string::npos ? 1 : 2;
    };
    std::stable_sort(figures.begin(), figures.end(),
                     [&](const ComparedFigure* a, const ComparedFigure* b) { return rank(a) < rank(b); });
    Json rows = Json::array();
    for (const ComparedFigure& figure : comparison.savings) {
        rows.push_back(rowOf(figure, figureInfo(figure.name, true).meaning));
        rows.back()["label"] = figure.name + " against the first run";
    }
    for (std::size_t i = 0; i < std::min(figures.size(), kMostFigures); ++i) {
        rows.push_back(rowOf(*figures[i], meaningOf(figures[i]->name)));
    }
    page["figures"] = std::move(rows);
    if (figures.size() > kMostFigures) page["more_figures"] = figures.size() - kMostFigures;
}

Json sweepOf(const ComparedSweep& sweep) {
    Json keys = Json::array(), figures = Json::array();
    for (std::size_t i = 0; i < sweep.keys.size(); ++i) {
        const ComparedSweep::Key& key = sweep.keys[i];
        Json values = key.numbers.empty() ? Json(key.texts) : numbers(key.numbers);
        keys.push_back({{"name", key.name}, {"unit", key.unit}, {"values", std::move(values)}});
    }
    for (const ComparedFigure& figure : sweep.figures) {
        if (!figure.name.starts_with(kAccount)) figures.push_back(rowOf(figure, meaningOf(figure.name)));
    }
    Json data{{"keys", std::move(keys)}, {"figures", std::move(figures)}, {"members", sweep.members}};
    data["all"] = sweep.all;
    if (sweep.failures.empty()) return data;
    data["outcomes"] = sweep.outcomes;
    data["ends"] = sweep.ends;
    for (const ComparedSweep::Failure& one : sweep.failures) {
        data["failures"].push_back({{"member", one.member}, {"outcome", one.outcome}, {"message", one.message}});
    }
    return data;
}

std::string titleOf(const Comparison& comparison, const ComparedSweep* sweep) {
    if (sweep) return sweep->title.empty() ? "A sweep" : sweep->title;
    const std::string& first = comparison.runs.front().title;
    return first.empty() ? fmt::format("{} runs", comparison.runs.size()) : first;
}

}  // namespace

std::string comparePage(const Comparison& comparison, const ComparedSweep* sweep) {
    const std::string title = titleOf(comparison, sweep);
    Json page{{"compare", true}, {"title", title}, {"runs", runsOf(comparison)}};
    addFigures(comparison, page);
    if (Json overlays = overlaysOf(comparison.runs); !overlays.empty()) page["overlays"] = std::move(overlays);
    if (sweep) page["sweep"] = sweepOf(*sweep);
    Json notes = comparison.warnings;
    if (sweep && sweep->all > sweep->members.size()) {
        notes.push_back(fmt::format("the chart shows {} of {} members", sweep->members.size(), sweep->all));
    }
    if (!notes.empty()) page["notes"] = std::move(notes);
    page["made"] = comparedMade(comparison, namesOf(comparison.runs), sweep);
    return filledPage(title, "", page);
}

}  // namespace kesto
