#include "summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "network.h"

namespace kesto {

namespace {

std::string amount(double value) {
    const double size = std::abs(value);
    if (std::isnan(value)) return "not a number";
    if (size == 0) return "0";
    if (size < 0.1 || size >= 1e12) return fmt::format("{:.4g}", value);
    return fmt::format("{:.1f}", value);
}

std::string heading(const Results& results) {
    const Model& model = *results.model;
    const Simulation& simulation = model.simulation;
    std::string text = fmt::format("{}\n", model.title.empty() ? model.path : model.title);
    text +=
        fmt::format("Period      {} to {}: {} steps of {} day{}\n", toText(simulation.start), toText(simulation.end),
                    simulation.days(), simulation.timeStep, simulation.timeStep == 1 ? "" : "s");
    text += fmt::format("Components  {}, with {} connections\n", model.components.size(), model.connections.size());
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

std::string tankTable(const Results& results) {
    const std::vector<TankService> tanks = tankServices(results);
    if (tanks.empty()) return {};
    std::size_t width = 0;
    for (const TankService& service : tanks) {
        width = std::max(width, service.tank->name.size());
    }
    std::string text = "\nTanks: share of the demand that was served\n";
    for (const TankService& service : tanks) {
        std::string share = "nothing was asked of it";
        if (!service.isRecorded) {
            share = "not known: its demand or its deficit is not recorded";
        } else if (service.served) {
            share = fmt::format("{:.1f} %: {} L of {} L", 100 * *service.served,
                                amount(service.demand - service.deficit), amount(service.demand));
        } else if (std::isnan(service.demand) || std::isnan(service.deficit)) {
            share = "not a number";
        }
        text += fmt::format("  {:<{}}  {}\n", service.tank->name, width, share);
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

std::vector<TankService> tankServices(const Results& results) {
    const Model& model = *results.model;
    const Network network(model);
    std::vector<TankService> tanks;
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        const Component& component = model.components[i];
        if (component.code != code::kTank) continue;
        const Flow* deficit = results.find({static_cast<int>(i), 1});
        const Flow* demand = nullptr;
        for (const int index : network.inputs(static_cast<int>(i))) {
            const Connection& connection = model.connections[static_cast<std::size_t>(index)];
            if (connection.toPort == 2) demand = results.find({connection.from, connection.fromPort});
        }
        TankService service{&component, deficit && demand, 0, 0, std::nullopt};
        if (service.isRecorded) {
            service.demand = total(*demand, results.steps);
            service.deficit = total(*deficit, results.steps);
            if (service.demand > 0 && !std::isnan(service.deficit)) {
                service.served = 1 - service.deficit / service.demand;
            }
        }
        tanks.push_back(service);
    }
    return tanks;
}

// What went wrong, when, and in which component; empty when nothing did.
std::string failureOf(const Results& results) {
    const EngineRun& run = results.run;
    const Model& model = *results.model;
    std::string when = "before the first step";
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

std::string summaryOf(const Results& results) {
    return heading(results) + flowTable(results) + tankTable(results) + potentialTable(results);
}

}  // namespace kesto
