#include "comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "display.h"
#include "files.h"
#include "json_reading.h"
#include "written_files.h"

namespace kesto {

namespace {

std::string periodOf(const ComparedRun& run) {
    return run.start.empty() ? "" : run.start + " to " + run.end;
}

bool isSame(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

// "the runs are over different periods: a 2012-01-01 to 2012-12-31, b 2013-01-01 to 2013-12-31"
template <typename Text>
void warnOf(const char* what, const std::vector<ComparedRun>& runs, const Text& textOf,
            std::vector<std::string>& warnings) {
    std::string all, first;
    bool isAlike = true;
    for (const ComparedRun& run : runs) {
        if (textOf(run).empty()) continue;
        if (all.empty()) first = textOf(run);
        isAlike = isAlike && textOf(run) == first;
        all += fmt::format("{}{} {}", all.empty() ? "" : ", ", run.name, textOf(run));
    }
    if (!isAlike) warnings.push_back(fmt::format("the runs are {}: {}", what, all));
}

// By what their files hold, whatever they are called.
bool haveSameModel(const std::vector<ComparedRun>& runs) {
    return std::all_of(runs.begin(), runs.end(), [&](const ComparedRun& run) {
        return !run.modelSha256.empty() && run.modelSha256 == runs.front().modelSha256;
    });
}

// Of those beside the model that the first run and another have read under the same name.
std::string filesChanged(const std::vector<ComparedRun>& runs) {
    const MadeOf first = runs.empty() ? MadeOf() : runs.front().made;
    const std::map<std::string, std::string> before(first.inputs.begin(), first.inputs.end());
    std::set<std::string> changed;
    for (const ComparedRun& run : runs) {
        for (std::size_t i = 1; i < run.made.inputs.size(); ++i) {
            const auto& [file, sha256] = run.made.inputs[i];
            const auto known = before.find(file);
            if (known != before.end() && known->second != sha256) changed.insert(file);
        }
    }
    return fmt::format("{}", fmt::join(changed, ", "));
}

std::vector<std::string> warningsOf(const std::vector<ComparedRun>& runs) {
    std::vector<std::string> warnings;
    warnOf(
        "over different periods", runs, [](const ComparedRun& run) { return periodOf(run); }, warnings);
    if (!haveSameModel(runs)) {
        const auto fileOf = [](const ComparedRun& run) { return run.model; };
        const auto hashOf = [](const ComparedRun& run) { return run.modelSha256.substr(0, 8); };
        const auto before = warnings.size();
        warnOf("of different models", runs, fileOf, warnings);
        if (warnings.size() == before) warnOf("of different versions of the model file", runs, hashOf, warnings);
    }
    warnOf(
        "in different currencies", runs, [](const ComparedRun& run) { return currencyOf(run); }, warnings);
    if (const std::string files = filesChanged(runs); !files.empty()) {
        warnings.push_back(fmt::format("between the runs these files have changed: {}", files));
    }
    for (const ComparedRun& run : runs) {
        if (run.outcome != "finished") warnings.push_back(fmt::format("{}: this run {}", run.name, run.outcome));
    }
    return warnings;
}

std::vector<ComparedSeries> daysOf(const Results& results, const Overview& overview) {
    std::set<std::string> shown;
    for (const ShownSeries& series : overview.shown) {
        shown.insert(series.name);
    }
    std::vector<ComparedSeries> days;
    for (const Flow& flow : results.flows) {
        if (!shown.contains(flow.name)) continue;
        std::vector<float> values(results.steps);
        for (std::size_t step = 0; step < values.size(); ++step) {
            values[step] = static_cast<float>(amount(flow.signals[step]));
        }
        days.push_back({flow.name, std::string(flow.unit), true, std::move(values)});
    }
    const auto add = [&](const std::string& name, std::string_view unit, bool isSum, const float* values) {
        if (shown.contains(name)) days.push_back({name, std::string(unit), isSum, {values, values + results.steps}});
    };
    for (const State& state : results.states) {
        if (state.kind == SeriesKind::storage) add(state.name + ":storage", state.unit, false, state.values);
    }
    for (const PotentialSeries& series : results.potentials) {
        add(fmt::format("{}:{}", series.group, info(series.potential).name), series.unit, true, series.values);
    }
    return days;
}

MadeOf madeOf(const nlohmann::json& summary) {
    MadeOf made{summary.value("version", ""), {}, {}};
    const std::string sha256 = summary.value("model_sha256", "");
    if (!sha256.empty()) made.inputs.emplace_back(summary.at("model_file"), sha256);
    for (const auto& input : summary.value("inputs", nlohmann::json::array())) {
        made.inputs.emplace_back(input.at("file"), input.at("sha256"));
    }
    for (const auto& [option, key] : {std::pair("--scenario", "scenarios"), std::pair("--set", "set")}) {
        for (const auto& text : summary.value(key, nlohmann::json::array())) {
            made.options.emplace_back(option, text);
        }
    }
    const std::string from = summary.value("states_from", "");
    if (!from.empty()) made.options.emplace_back("--states-from", nameOf(pathOf(from).filename()));
    if (summary.value("approximate", false)) made.options.emplace_back("--approximate", "");
    return made;
}

}  // namespace

bool ComparedFigure::differs() const {
    return !std::all_of(values.begin(), values.end(), [&](double value) { return isSame(value, values.front()); });
}

ComparedRun comparedRun(const std::string& name, const Results& results, const Evaluation& evaluation) {
    const Model& model = *results.model;
    ComparedRun run{.name = name,
                    .title = model.title,
                    .model = model.path,
                    .modelSha256 = "",
                    .start = toText(model.simulation.start),
                    .end = toText(model.simulation.end),
                    .outcome = std::string(toText(results.run.outcome)),
                    .figures = {},
                    .units = {}};
    if (evaluation.overview) {
        run.overview = toJson(*evaluation.overview);
        run.days = daysOf(results, *evaluation.overview);
        for (const InputFile& input : inputsOf(inputPaths(model))) {
            run.made.inputs.emplace_back(input.path, input.sha256);
        }
    }
    for (const Figure& figure : evaluation.figures.rows) {
        run.figures.emplace_back(evaluation.figures.nameOf(figure), figure.value);
        run.units.push_back(evaluation.figures.unitOf(figure));
    }
    return run;
}

ComparedRun readComparedRun(const std::string& folder) {
    const std::string path = joined(folder, kSummaryFile);
    return readingJson(path, "kesto run", [&] {
        const auto summary = nlohmann::json::parse(readFile(path, kLargestModel));
        const auto shown = [](const nlohmann::json& value) { return printable(value.get<std::string>()); };
        const auto text = [&](const char* key) { return shown(summary.at(key)); };
        ComparedRun run{.name = folder,
                        .title = text("title"),
                        .model = text("model_file"),
                        .modelSha256 = summary.value("model_sha256", ""),
                        .start = text("start"),
                        .end = text("end"),
                        .outcome = text("outcome"),
                        .figures = {},
                        .units = {}};
        run.folder = folder;
        for (const auto& scenario : summary.value("scenarios", nlohmann::json::array())) {
            run.set.push_back("--scenario " + shown(scenario));
        }
        for (const auto& set : summary.value("set", nlohmann::json::array())) {
            run.set.push_back(shown(set));
        }
        run.made = madeOf(summary);
        for (const auto& row : summary.at("figures")) {
            const auto& value = row.at("value");
            run.figures.emplace_back(shown(row.at("name")), value.is_null() ? kNoValue : value.get<double>());
            run.units.push_back(shown(row.at("unit")));
        }
        return run;
    });
}

Comparison compare(std::vector<ComparedRun> runs, bool withAlike) {
    Comparison comparison;
    std::map<std::string, std::size_t> rows;
    std::vector<ComparedFigure> all;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        for (std::size_t k = 0; k < runs[i].figures.size(); ++k) {
            const auto& [name, value] = runs[i].figures[k];
            const auto [row, isNew] = rows.emplace(name, all.size());
            if (isNew) all.push_back({name, runs[i].units[k], std::vector<double>(runs.size(), kNoValue)});
            all[row->second].values[i] = value;
        }
    }
    for (ComparedFigure& figure : all) {
        if (withAlike || figure.differs()) {
            comparison.figures.push_back(std::move(figure));
        } else {
            ++comparison.alike;
        }
    }
    comparison.warnings = warningsOf(runs);
    comparison.savings = savingsOf(runs);
    comparison.runs = std::move(runs);
    return comparison;
}

}  // namespace kesto
