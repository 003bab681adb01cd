#include "results_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <unordered_map>

#include "account.h"
#include "results.h"
#include "summary.h"

namespace kesto {

namespace {

// One recorded series of a component or a group.
struct Checked {
    std::string name;  // "its runoff"
    const float* values;
    std::size_t stride;  // floats from one step to the next: 1 or kSignalStride
    bool isQuality;
    const float* flow = nullptr;  // whose quality it is, with the same stride; of a state none
};

// What is odd about a value, and its warning.
enum Oddity : std::size_t { kNotFinite, kOddQuality, kEmptyQuality, kOddities };
constexpr std::array<WarningName, kOddities> kCodes{"not-finite", "odd-quality", "empty-quality"};
constexpr std::array<std::string_view, kOddities> kEndings{"", "; expected 0 to 1e9, or -1 for none",
                                                           "; it has no water then"};

struct Finding {
    std::string name;
    std::size_t first = 0;  // step
    std::size_t count = 0;
    float value = 0;
};

class Checks {
  public:
    Checks(const Results& results, Diagnostics& diagnostics) : results_(results), diagnostics_(diagnostics) {}

    // Most series are sound, and a quick pass tells; of signals it is known.
    void add(const Checked& series) {
        const SoundRange& range = series.isQuality ? kSoundQuality : kFinite;
        if (series.stride == 1 && areAllIn<1>(range, series.values, results_.steps)) return;
        std::array<Finding, kOddities> findings;
        for (std::size_t step = 0; step < results_.steps; ++step) {
            const float value = series.values[step * series.stride];
            if (range.contains(value)) continue;
            const bool isEmpty = series.flow && series.flow[step * series.stride] == 0;
            Finding& finding = findings[std::isfinite(value) ? kOddQuality : isEmpty ? kEmptyQuality : kNotFinite];
            if (finding.count++ > 0) continue;
            finding.name = series.name;
            finding.first = step;
            finding.value = value;
        }
        for (std::size_t oddity = 0; oddity < kOddities; ++oddity) {
            if (findings[oddity].count > 0) found_[oddity].push_back(findings[oddity]);
        }
    }

    // What was added since the last report is of one component, or of one group.
    void report(const Place& place, const std::string& subject, const std::string& component) {
        for (std::size_t oddity = 0; oddity < kOddities; ++oddity) {
            std::vector<Finding>& findings = found_[oddity];
            if (findings.empty()) continue;
            const std::string text = fmt::format("{}: {}{}", subject, textOf(findings), kEndings[oddity]);
            diagnostics_.warning(kCodes[oddity], place, text, component);
            findings.clear();
        }
    }

  private:
    static std::string toText(float value) {
        if (std::isnan(value)) return "not a number";
        return std::isinf(value) ? "infinite" : fmt::format("{:.10g}", static_cast<double>(value));
    }

    // The series that went wrong first, then the names of the others.
    std::string textOf(const std::vector<Finding>& findings) const {
        const auto first = std::min_element(findings.begin(), findings.end(),
                                            [](const Finding& a, const Finding& b) { return a.first < b.first; });
        std::vector<std::string_view> others;
        for (const Finding& finding : findings) {
            if (&finding != &*first) others.push_back(finding.name);
        }
        return fmt::format("{} is {} on {} of {} days, the first {}{}", first->name, toText(first->value), first->count,
                           results_.steps, kesto::toText(results_.dayOf(first->first)),
                           others.empty() ? "" : fmt::format("; {} too", listOf(others, "and")));
    }

    const Results& results_;
    Diagnostics& diagnostics_;
    std::array<std::vector<Finding>, kOddities> found_;
};

void checkComponents(const Results& results, Checks& checks) {
    const Model& model = *results.model;
    std::map<int, std::vector<Checked>> series;
    for (const Flow& flow : results.flows) {
        if (flow.totals.isSound) continue;
        const Component& component = model.components[at(flow.component)];
        const std::string name =
            flow.port == 0 ? "what it receives" : "its " + portName(component.type->out, flow.port);
        series[flow.component].push_back({name, &flow.signals->quantity, kSignalStride, false});
        series[flow.component].push_back(
            {"the quality of " + name, &flow.signals->quality, kSignalStride, true, &flow.signals->quantity});
    }
    for (const State& state : results.states) {
        const bool isQuality = state.kind == SeriesKind::quality;
        series[model.findComponent(state.name)].push_back(
            {isQuality ? "its stored quality" : "its storage", state.values, 1, isQuality});
    }
    for (const auto& [index, list] : series) {
        const Component& component = model.components[at(index)];
        for (const Checked& one : list) {
            checks.add(one);
        }
        checks.report(component.place, fmt::format("{} ({})", nameOf(component), component.type->name), component.name);
    }
}

void checkGroups(const Results& results, Checks& checks) {
    const Model& model = *results.model;
    std::unordered_map<std::string_view, std::vector<const PotentialSeries*>> ofGroups;
    for (const PotentialSeries& series : results.potentials) {
        ofGroups[series.group].push_back(&series);
    }
    for (const Group& group : model.groups) {
        for (const PotentialSeries* series : ofGroups[group.name]) {
            checks.add({fmt::format("its {}", info(series->potential).name), series->values, 1, false});
        }
        checks.report(group.place, fmt::format("group \"{}\"", group.name), "");
    }
}

}  // namespace

void checkResults(const Results& results, Diagnostics& diagnostics) {
    Checks checks(results, diagnostics);
    checkComponents(results, checks);
    checkGroups(results, checks);
}

void checkAccount(const Results& results, const Account& account, Diagnostics& diagnostics) {
    for (const AccountEntry& entry : account.entries) {
        const bool isCreated = entry.kind == AccountKind::created;
        if ((!isCreated && entry.kind != AccountKind::destroyed) || !std::isfinite(entry.litres)) continue;
        const Component& component = results.model->components[at(entry.component)];
        diagnostics.warning("created-water", component.place,
                            fmt::format("{} ({}) {} {:.1f} L: {}", nameOf(component), component.type->name,
                                        isCreated ? "creates" : "destroys", entry.litres, entry.reason),
                            component.name);
    }
}

// Where a component's balance is off, those of its group and of the network are off for no reason of their own.
void checkBalance(const Results& results, const Balance& balance, Diagnostics& diagnostics) {
    using Level = BalanceRow::Level;
    const Model& model = *results.model;
    const bool isOfComponents = std::any_of(balance.rows.begin(), balance.rows.end(), [](const BalanceRow& row) {
        return row.level == Level::component && row.isOff();
    });
    for (const BalanceRow& row : balance.rows) {
        const bool isOfComponent = row.level == Level::component;
        if (!row.isOff() || isOfComponent != isOfComponents) continue;
        Place place{std::make_shared<const std::string>(model.path), 0, 0};
        if (isOfComponent) place = model.components[at(model.findComponent(row.name))].place;
        if (row.level == Level::group) place = model.groups[at(model.findGroup(row.name))].place;
        const std::string whose =
            row.level == Level::network ? "the network" : fmt::format("{} \"{}\"", toText(row.level), row.name);
        const double error = row[Column::error];
        const std::string why = std::isfinite(error)
                                    ? fmt::format(
                                          "{:.6g} L are missing ({:.2g} of what went through; rounding "
                                          "explains {:.2g} L)",
                                          error, row.relative, row.tolerance)
                                    : "its figures are no numbers";
        diagnostics.warning("open-balance", place, fmt::format("the balance of {} does not close: {}", whose, why),
                            isOfComponent ? row.name : "");
    }
}

void reportFailure(const Results& results, Diagnostics& diagnostics) {
    const Place place{std::make_shared<const std::string>(results.model->path), 0, 0};
    const auto report = [&](ErrorName code) {
        const Component* component = componentIn(results.run.message, *results.model);
        diagnostics.error(code, place, failureOf(results), component ? component->name : "");
    };
    switch (results.run.outcome) {
        case Outcome::finished:
            break;
        case Outcome::failed:
            return report("run-failed");
        case Outcome::crashed:
            return report("engine-crashed");
        case Outcome::interrupted:
            return report("interrupted");
    }
}

}  // namespace kesto
