#include "memory_estimate.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>
#include <vector>

#include "record.h"

namespace kesto {

namespace {

// Sources that say the same share their values, and so do groups with the same uses.
double inputSeries(const Model& model) {
    std::map<SeriesSource::Content, int> known;
    std::vector<int> contents;
    for (const SeriesSource& source : model.sources) {
        contents.push_back(known.emplace(source.content(), static_cast<int>(known.size())).first->second);
    }
    std::set<std::array<int, kUseKinds>> uses;
    for (const Group& group : model.groups) {
        if (group.uses == Group().uses) continue;
        std::array<int, kUseKinds> mix{};
        std::transform(group.uses.begin(), group.uses.end(), mix.begin(),
                       [&](SourceIndex source) { return source < 0 ? -1 : contents[at(source)]; });
        uses.insert(mix);
    }
    return static_cast<double>(known.size() + kUseKinds * uses.size());
}

}  // namespace

double expectedMemory(const Model& model, const RecordingPlan& plan) {
    const auto steps = static_cast<double>(model.simulation.days());
    const auto outputs = static_cast<double>(plan.logged.size() + plan.fromOwnLog.size());
    double states = 0;
    for (const Component& component : model.components) {
        for (const SeriesNeed& need : component.type->series) {
            if (need.isState) ++states;
        }
    }
    const double recorded = outputs * sizeof(Signal);
    const double series = inputSeries(model);
    const double potentials = static_cast<double>(kPotentials * model.groups.size()) * sizeof(float);
    return steps * (recorded + potentials + (series + states) * sizeof(float));
}

std::string bytesToText(double count) {
    if (count < 1e6) return fmt::format("{:.0f} kB", std::ceil(count / 1e3));
    return count < 1e9 ? fmt::format("{:.1f} MB", count / 1e6) : fmt::format("{:.1f} GB", count / 1e9);
}

}  // namespace kesto
