#include "memory_estimate.h"

#include <fmt/format.h>

#include <cmath>

#include "record.h"

namespace kesto {

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
    const double recorded = outputs * sizeof(Signal);
    const double potentials = static_cast<double>(kPotentials * model.groups.size()) * sizeof(float);
    return steps * (recorded + potentials + (series + states) * sizeof(float));
}

std::string bytesToText(double count) {
    if (count < 1e6) return fmt::format("{:.0f} kB", std::ceil(count / 1e3));
    return count < 1e9 ? fmt::format("{:.1f} MB", count / 1e6) : fmt::format("{:.1f} GB", count / 1e9);
}

}  // namespace kesto
