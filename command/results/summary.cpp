#include "summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "read_options.h"

namespace kesto {

namespace {

std::string amount(double value) {
    const double size = std::abs(value);
    if (std::isnan(value)) return "not a number";
    if (size == 0) return "0";
    if (size < 0.1 || size >= 1e12) return fmt::format("{:.4g}", value);
    return fmt::format("{:.1f}", value);
}

// What the command line has put in place of the file's values.
std::string readWith(const Results& results) {
    if (!results.read) return {};
    std::string text;
    for (const std::string& scenario : results.read->scenarios) {
        text += fmt::format("Scenario    {}\n", scenario);
    }
    for (const std::string& set : results.read->set) {
        text += fmt::format("Set         {}\n", set);
    }
    if (!results.read->statesFrom.empty()) {
        text += fmt::format("States      of {}, from {}\n", toText(results.model->simulation.start - 1),
                            results.read->statesFrom);
    }
    return text;
}

std::string heading(const Results& results) {
    const Model& model = *results.model;
    const Simulation& simulation = model.simulation;
    std::string text = fmt::format("{}\n", model.title.empty() ? model.path : model.title);
    text +=
        fmt::format("Period      {} to {}: {} steps of {} day{}\n", toText(simulation.start), toText(simulation.end),
                    simulation.days(), simulation.timeStep, simulation.timeStep == 1 ? "" : "s");
    text += fmt::format("Components  {}, with {} connections\n", model.components.size(), model.connections.size());
    text += readWith(results);
    if (results.run.outcome != Outcome::finished) {
        text += fmt::format("STOPPED     after {} of {} steps; what follows counts those alone\n", results.steps,
                            simulation.days());
    }
    return text;
}

std::string flowTable(const Results& results) {
    if (results.flows.empty()) return {};
    std::size_t width = 0;
    for (const Flow& flow : results.flows) {
        width = std::max(width, flow.name.size());
    }
    std::string text = "\nRecorded flows, total and mean of a step\n";
    for (const Flow& flow : results.flows) {
        const double sum = total(flow, results.steps);
        const double steps = std::max<double>(static_cast<double>(results.steps), 1);
        text += fmt::format("  {:<{}}  {:<6}  {:>14} {:<2}  {:>12} {}\n", flow.name, width, toText(flow.carries),
                            amount(sum), flow.unit, amount(sum / steps), flow.unit);
    }
    return text;
}

std::string potentialTable(const Results& results) {
    if (results.potentials.empty()) return {};
    std::size_t width = 0;
    for (const PotentialSeries& series : results.potentials) {
        width = std::max(width, series.group.size());
    }
    std::string text = "\nPotentials by group, total\n";
    for (const PotentialSeries& series : results.potentials) {
        const PotentialInfo& potential = info(series.potential);
        text += fmt::format("  {:<{}}  {:<12}  {:>14} {}\n", series.group, width, potential.name,
                            amount(total(series.values, results.steps)), series.unit);
    }
    return text;
}

}  // namespace

double total(const Flow& flow, std::size_t steps) {
    double sum = 0;
    for (std::size_t step = 0; step < steps; ++step) {
        sum += static_cast<double>(flow.signals[step].quantity);
    }
    return sum;
}

double total(const float* values, std::size_t steps) {
    double sum = 0;
    for (std::size_t step = 0; step < steps; ++step) {
        sum += static_cast<double>(values[step]);
    }
    return sum;
}

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

std::string summaryOf(const Results& results, const Evaluation& evaluation) {
    return heading(results) + flowTable(results) + toText(evaluation.account) + toText(evaluation.figures) +
           potentialTable(results) + (evaluation.showsBalance ? toText(evaluation.balance) : "");
}

}  // namespace kesto
