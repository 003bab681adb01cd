#include "summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "diagnostics.h"
#include "display.h"
#include "read_options.h"

namespace kesto {

namespace {

constexpr std::size_t kFlowsInBrief = 10;
constexpr std::size_t kSetInBrief = 1;
constexpr std::size_t kCodesShown = 4;

// What the command line has put in place of the file's values.
std::string readWith(const Results& results, Detail detail) {
    if (!results.read) return {};
    std::string text;
    for (const std::string& scenario : results.read->scenarios) {
        text += fmt::format("Scenario    {}\n", scenario);
    }
    const std::vector<std::string>& set = results.read->set;
    const std::size_t most = detail == Detail::full ? set.size() : std::min(set.size(), kSetInBrief);
    for (std::size_t i = 0; i < most; ++i) {
        text += fmt::format("Set         {}\n", set[i]);
    }
    if (most < set.size()) text += fmt::format("Set         {} more\n", set.size() - most);
    if (!results.read->statesFrom.empty()) {
        text += fmt::format("States      of {}, from {}\n", toText(results.model->simulation.start - 1),
                            results.read->statesFrom);
    }
    return text;
}

// "3 not-finite, 1 odd-value, accepted": how many there are of each code; their texts are told where they arise.
std::string warnings(const Results& results) {
    if (!results.diagnostics) return {};
    std::map<std::string, std::size_t> counts;
    for (const Diagnostic& one : results.diagnostics->all()) {
        if (one.severity != Severity::warning) continue;
        ++counts[std::string(one.code) + (results.diagnostics->isAccepted(one) ? " (accepted)" : "")];
    }
    if (counts.empty()) return {};
    std::string text;
    std::size_t told = 0;
    for (const auto& [code, count] : counts) {
        if (++told > kCodesShown) break;
        text += fmt::format("{}{} {}", told == 1 ? "" : ", ", withThousands(count), code);
    }
    const std::size_t more = counts.size() - std::min(counts.size(), kCodesShown);
    return fmt::format("Warnings    {}{}\n", text, more > 0 ? fmt::format(" and of {} other codes", more) : "");
}

std::string heading(const Results& results, Detail detail) {
    const Model& model = *results.model;
    const Simulation& simulation = model.simulation;
    std::string text = fmt::format("{}\n", model.title.empty() ? model.path : model.title);
    text +=
        fmt::format("Period      {} to {}: {} steps of {} day{}\n", toText(simulation.start), toText(simulation.end),
                    simulation.days(), simulation.timeStep, simulation.timeStep == 1 ? "" : "s");
    text += fmt::format("Components  {}, with {} connections\n", model.components.size(), model.connections.size());
    text += readWith(results, detail) + warnings(results);
    if (results.run.outcome != Outcome::finished) {
        text += fmt::format("STOPPED     after {} of {} steps; what follows counts those alone\n", results.steps,
                            simulation.days());
    }
    return text;
}

struct FlowSum {
    const Flow* flow;
    double sum;
};

// What is no number, then water by its amount, then demands, then what is no volume.
bool isBefore(const FlowSum& a, const FlowSum& b) {
    const auto rank = [](const FlowSum& one) {
        if (std::isnan(one.sum)) return 0;
        if (one.flow->unit != "L") return 3;
        return one.flow->carries == Carries::water ? 1 : 2;
    };
    return rank(a) != rank(b) ? rank(a) < rank(b) : std::abs(a.sum) > std::abs(b.sum);
}

// In brief the largest; in full all, in the order of the components.
std::string flowTable(const Results& results, Detail detail) {
    std::vector<FlowSum> flows;
    for (const Flow& flow : results.flows) {
        flows.push_back({&flow, flow.totals.quantity});
    }
    if (flows.empty()) return {};
    std::string text = "\nRecorded flows, total and mean of a step\n";
    if (detail == Detail::brief && flows.size() > kFlowsInBrief) {
        text = fmt::format("\nThe largest of {} flows, total and mean of a step; --full shows all\n",
                           withThousands(flows.size()));
        std::stable_sort(flows.begin(), flows.end(), isBefore);
        flows.resize(kFlowsInBrief);
    }
    const double steps = std::max<double>(static_cast<double>(results.steps), 1);
    std::vector<std::vector<std::string>> rows;
    for (const auto& [flow, sum] : flows) {
        rows.push_back({shownName(flow->name, detail), std::string(toText(flow->carries)), shown(sum, flow->unit),
                        shown(sum / steps, flow->unit)});
    }
    return text + alignedRows(rows);
}

std::string potentialTable(const Results& results) {
    if (results.potentials.empty()) return {};
    std::vector<std::vector<std::string>> rows;
    for (const PotentialSeries& series : results.potentials) {
        rows.push_back({series.group, std::string(info(series.potential).name), shown(series.total, series.unit)});
    }
    return "\nPotentials by group, total\n" + alignedRows(rows);
}

}  // namespace

// What went wrong, when, and in which component; empty when nothing did.
std::string failureOf(const Results& results) {
    const EngineRun& run = results.run;
    const Model& model = *results.model;
    std::string when = run.step < 0 ? "before the first step" : "after the last step";
    if (run.step >= 0 && run.step < model.simulation.days()) {
        when = fmt::format("on {}, step {} of {}", toText(results.dayOf(static_cast<std::size_t>(run.step))),
                           run.step + 1, model.simulation.days());
    }
    switch (run.outcome) {
        case Outcome::finished:
            break;
        case Outcome::failed:
            return fmt::format("the run stopped {}: {}", when, explainMessage(run.message, model));
        case Outcome::crashed:
            return fmt::format("the engine gave up {}: {}", when, run.message);
        case Outcome::interrupted:
            return fmt::format("the run was interrupted {}", when);
    }
    return {};
}

std::string summaryOf(const Results& results, const Evaluation& evaluation, Detail detail) {
    return heading(results, detail) + toText(evaluation.figures, detail) + toText(evaluation.account, detail) +
           flowTable(results, detail) + (detail == Detail::full ? potentialTable(results) : "") +
           (evaluation.showsBalance ? toText(evaluation.balance, detail) : "");
}

}  // namespace kesto
