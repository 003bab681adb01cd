#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "compare_parts.h"
#include "expected_shape.h"
#include "stored_series.h"

namespace kesto {

namespace {

constexpr std::size_t kMostByMonth = 60;
constexpr std::size_t kMostByDay = 12;
constexpr std::string_view kUsed = "Used: ";
constexpr std::size_t kMostValues = 400'000;  // of days, of all runs

// One series of one run.
struct Line {
    std::string label, unit;
    bool isSum;
    std::string first;
    int stepDays;  // 0: months
    std::vector<float> values;
};

std::vector<float> floats(const Json& numbers) {
    std::vector<float> values;
    for (const Json& number : numbers) {
        values.push_back(number.is_number() ? number.get<float>() : std::nanf(""));
    }
    return values;
}

// "house: tank storage", or of all groups "tank storage"
std::string labelOf(const Json& sum) {
    const std::string group = sum.value("group", ""), output = sum.value("output", "");
    return fmt::format("{}{} {}", group.empty() ? "" : group + ": ", sum.at("type").get<std::string>(),
                       output.empty() ? "storage" : output);
}

// Of the run itself, or as it stands in its folder; empty: there is none.
Json overviewOf(const ComparedRun& run) {
    if (!run.overview.empty()) return Json::parse(run.overview);
    return run.folder.empty() ? Json::object() : readOverview(run.folder, storedResults(run.folder).files);
}

std::vector<Line> monthsOf(const ComparedRun& run, const Json& overview) {
    std::vector<Line> lines;
    const std::string first = run.start.substr(0, 7);
    if (const auto months = overview.find("months"); months != overview.end()) {
        for (const Json& one : months->at("series")) {
            lines.push_back({std::string(kUsed) + one.at("label").get<std::string>(), months->at("unit"), true, first,
                             0, floats(one.at("values"))});
        }
    }
    if (const auto sums = overview.find("sums"); sums != overview.end()) {
        for (const Json& sum : *sums) {
            lines.push_back(
                {labelOf(sum), sum.at("unit"), sum.contains("carries"), first, 0, floats(sum.at("months"))});
        }
    }
    return lines;
}

const Line* lineLike(const std::vector<Line>& lines, const Line& like) {
    const auto found = std::find_if(lines.begin(), lines.end(), [&](const Line& line) {
        return line.label == like.label && line.unit == like.unit;
    });
    return found == lines.end() ? nullptr : &*found;
}

// A source that a run does not use is not among what it has: it gave nothing.
void addUnused(std::vector<std::vector<Line>>& runs) {
    std::vector<Line> all;
    for (const std::vector<Line>& lines : runs) {
        for (const Line& line : lines) {
            if (line.label.starts_with(kUsed) && !lineLike(all, line)) all.push_back(line);
        }
    }
    for (std::vector<Line>& lines : runs) {
        if (lines.empty()) continue;
        for (Line line : all) {
            if (lineLike(lines, line)) continue;
            line.first = lines.front().first;
            line.values.assign(lines.front().values.size(), 0);
            lines.push_back(std::move(line));
        }
    }
}

using Overlay = std::vector<const Line*>;  // of each run

// Those of the first run that all others have, and that are not nothing in all of them.
std::vector<Overlay> shared(const std::vector<std::vector<Line>>& runs) {
    std::vector<Overlay> overlays;
    for (const Line& line : runs.front()) {
        Overlay overlay;
        bool isSomething = false;
        for (const std::vector<Line>& lines : runs) {
            const Line* one = lineLike(lines, line);
            if (!one) break;
            overlay.push_back(one);
            isSomething = isSomething || std::any_of(one->values.begin(), one->values.end(),
                                                     [](float value) { return std::isfinite(value) && value != 0; });
        }
        if (overlay.size() == runs.size() && isSomething) overlays.push_back(std::move(overlay));
    }
    return overlays;
}

bool differs(const Overlay& overlay) {
    const auto isSame = [](float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); };
    const std::vector<float>& first = overlay.front()->values;
    return std::any_of(overlay.begin(), overlay.end(), [&](const Line* line) {
        return !std::equal(line->values.begin(), line->values.end(), first.begin(), first.end(), isSame);
    });
}

void addOverlays(std::vector<Overlay> overlays, std::size_t most, Json& list) {
    std::stable_partition(overlays.begin(), overlays.end(), differs);
    for (std::size_t i = 0; i < std::min(overlays.size(), most); ++i) {
        const Line& line = *overlays[i].front();
        Json values = Json::array(), firsts = Json::array();
        for (const Line* one : overlays[i]) {
            values.push_back(packed(one->values));
            firsts.push_back(one->first);
        }
        Json row{{"label", line.label + (line.stepDays > 0 ? ", by day" : "")},
                 {"unit", line.unit},
                 {"sum", line.isSum},
                 {"first", line.first},
                 {"firsts", std::move(firsts)},
                 {"values", std::move(values)}};
        if (line.stepDays > 0) row["step_days"] = line.stepDays;
        list.push_back(std::move(row));
    }
}

// Names of series by day that the pages of all runs would show, in the order of the first run.
std::vector<std::string> namesByDay(const std::vector<ComparedRun>& runs, const std::vector<Json>& overviews) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        if (overviews[i].empty()) return {};
        std::vector<std::string> own;
        for (const Json& shown : overviews[i].value("shown", Json::array())) {
            own.push_back(shown.at("name").get<std::string>());
        }
        const std::set<std::string> known(own.begin(), own.end());
        if (i == 0) names = std::move(own);
        std::erase_if(names, [&](const std::string& name) { return !known.contains(name); });
    }
    return names;
}

std::vector<Line> daysAtHand(const ComparedRun& run, const std::vector<std::string>& names) {
    std::vector<Line> lines;
    for (const std::string& name : names) {
        const auto found = std::find_if(run.days.begin(), run.days.end(),
                                        [&](const ComparedSeries& series) { return series.name == name; });
        if (found == run.days.end()) continue;
        lines.push_back({name, found->unit, found->isSum, run.start, 1, found->values});
    }
    return lines;
}

std::vector<Line> daysOf(const ComparedRun& run, const std::vector<std::string>& names) {
    if (run.folder.empty()) return daysAtHand(run, names);
    const StoredResults results = storedResults(run.folder);
    const StoredSeries stored(run.folder, results.files);
    std::vector<std::size_t> wanted;
    std::vector<Line> lines;
    for (const std::string& name : names) {
        for (std::size_t i = 0; i < stored.entries().size(); ++i) {
            const SeriesEntry& entry = stored.entries()[i];
            if (entry.name() != name) continue;
            wanted.push_back(i);
            lines.push_back({name,
                             entry.unit,
                             entry.quantity == Quantity::flow || entry.quantity == Quantity::potential,
                             run.start,
                             1,
                             {}});
            break;
        }
    }
    auto values = stored.valuesOf(wanted);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        lines[i].values = std::move(values[i]);
    }
    expectUnchanged(run.folder, results);
    return lines;
}

}  // namespace

Json overlaysOf(const std::vector<ComparedRun>& runs) {
    Json list = Json::array();
    if (runs.size() < 2) return list;
    std::vector<Json> overviews;
    std::vector<std::vector<Line>> months;
    for (const ComparedRun& run : runs) {
        overviews.push_back(overviewOf(run));
        months.push_back(monthsOf(run, overviews.back()));
    }
    addUnused(months);
    addOverlays(shared(months), kMostByMonth, list);

    const std::vector<std::string> names = namesByDay(runs, overviews);
    if (names.empty()) return list;
    std::vector<std::vector<Line>> days;
    std::size_t values = 1;
    for (const ComparedRun& run : runs) {
        days.push_back(daysOf(run, names));
        if (!days.back().empty()) values += days.back().front().values.size();
    }
    addOverlays(shared(days), std::min(kMostByDay, kMostValues / values), list);
    return list;
}

}  // namespace kesto
