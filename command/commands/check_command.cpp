#include <fmt/format.h>

#include <cmath>
#include <iostream>

#include "commands.h"
#include "load.h"
#include "network.h"
#include "record.h"
#include "record_choice.h"

namespace kesto {

namespace {

std::string bytes(double count) {
    if (count < 1e6) return fmt::format("{:.0f} kB", std::ceil(count / 1e3));
    return count < 1e9 ? fmt::format("{:.1f} MB", count / 1e6) : fmt::format("{:.1f} GB", count / 1e9);
}

// What a run with all outputs recorded will take: the engine's outputs are there twice while they are handed over.
double expectedMemory(const Model& model, const RecordingPlan& plan) {
    const auto steps = static_cast<double>(model.simulation.days());
    const auto outputs = static_cast<double>(plan.logged.size() + plan.fromOwnLog.size());
    double series = static_cast<double>(model.sources.size());
    double states = 0;
    for (const Component& component : model.components) {
        for (const SeriesNeed& need : component.type->series) {
            if (need.isState) ++states;
        }
    }
    for (const Group& group : model.groups) {
        if (group.uses != Group().uses) series += kUseKinds;
    }
    const double recorded = 2 * outputs * sizeof(Signal);
    const double potentials = 2.0 * static_cast<double>(kPotentials * model.groups.size()) * sizeof(float);
    return steps * (recorded + potentials + (series + states) * sizeof(float));
}

}  // namespace

int checkCommand(const CheckOptions& options) {
    LoadedModel loaded(options.model, options.read);
    Diagnostics& diagnostics = loaded.diagnostics();
    RecordingPlan plan;
    if (loaded.isFit()) {
        plan = planRecordings(loaded.model(), Network(loaded.model()), allOutputs(loaded.model()));
        reportRefusals(loaded.model(), plan, false, diagnostics);
    }
    diagnostics.print(std::cerr);
    const std::size_t errors = diagnostics.count(Severity::error);
    const std::size_t warnings = diagnostics.count(Severity::warning);
    if (!loaded.isFit()) {
        std::cerr << fmt::format("{} error{}, {} warning{}\n", errors, errors == 1 ? "" : "s", warnings,
                                 warnings == 1 ? "" : "s");
        return kBadModel;
    }
    const Model& model = loaded.model();
    std::cout << fmt::format(
        "{}: fit to run, {} warning{}\n{} components, {} connections, {} steps ({} to {})\n{} for a run with all "
        "outputs "
        "recorded\n",
        options.model, warnings, warnings == 1 ? "" : "s", model.components.size(), model.connections.size(),
        model.simulation.days(), toText(model.simulation.start), toText(model.simulation.end),
        bytes(expectedMemory(model, plan)));
    return kGood;
}

}  // namespace kesto
