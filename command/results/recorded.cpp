#include "recorded.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "lane_sum.h"

namespace kesto {

namespace {

constexpr double kPi = 3.141592653589793;

// Of a day of the year, counted from 0. C libraries differ in the last digit of these functions: in more digits, all
// give the same double.
double insolationOf(double latitude, int day) {
    const auto phi = static_cast<long double>(latitude / 180 * kPi);
    const auto angle = static_cast<long double>(2 * kPi / 365 * day);
    const long double declination = -0.409L * std::cos(angle + 0.16L);
    const long double sunset = std::acos(-std::tan(phi) * std::tan(declination));
    const long double height =
        sunset * std::sin(phi) * std::sin(declination) + std::cos(phi) * std::cos(declination) * std::sin(sunset);
    return static_cast<double>(static_cast<long double>(118108.8 / kPi) * (1 + 0.034L * std::cos(angle - 0.05L)) *
                               height);
}

double totalOf(const Signal* signals, std::size_t steps) {
    return laneSum(steps, [=](std::size_t step) { return amount(signals[step]); });
}

bool readsInsolation(const Type& type) {
    return std::any_of(type.series.begin(), type.series.end(),
                       [](const SeriesNeed& need) { return need.kind == SeriesKind::temperatureMin; });
}

// Only where evaporation follows from it: it takes as long as the rest of an evaluation.
std::vector<double> insolationOf(const Model& model) {
    const Simulation& simulation = model.simulation;
    std::vector<double> values;
    const bool isRead = std::any_of(model.components.begin(), model.components.end(),
                                    [](const Component& component) { return readsInsolation(*component.type); });
    if (!simulation.latitude || !isRead) return values;
    std::array<double, 366> ofYear{};
    for (std::size_t day = 0; day < ofYear.size(); ++day) {
        ofYear[day] = insolationOf(*simulation.latitude, static_cast<int>(day));
    }
    for (Day day = simulation.start; day <= simulation.end; ++day) {
        values.push_back(ofYear[static_cast<std::size_t>(day - dayOf({dateOf(day).year, 1, 1}))]);
    }
    return values;
}

}  // namespace

Recorded::Recorded(const Results& results, const AccountNeeds& needs, SeriesValues& series, const RunMonths* months)
    : NetworkView(*results.model),
      results_(results),
      needs_(needs),
      series_(series),
      storages_(static_cast<std::size_t>(components()), nullptr),
      insolation_(insolationOf(model())),
      months_(months ? months->count() : 0) {
    for (const State& state : results.states) {
        if (state.kind == SeriesKind::storage) storages_[at(model().findComponent(state.name))] = state.values;
    }
    byMonth_.reserve(months_ * results.flows.size());
    for (const Flow& flow : results.flows) {
        for (std::size_t month = 0; month < months_; ++month) {  // while the signals are in the cache
            byMonth_.push_back(totalOf(flow.signals + months->begin(month), months->days(month)));
        }
    }
    for (const Group& group : model().groups) {
        Sum sum;
        const SourceIndex source = group.series[SeriesKind::rainfall];
        const auto values = source >= 0 ? series.of(source) : nullptr;
        for (std::size_t step = 0; values && step < steps(); ++step) {
            const auto value = static_cast<double>((*values)[step]);
            sum.total += value;
            sum.magnitude += std::abs(value);
        }
        rains_.push_back(sum);
    }
}

const Signal* Recorded::signals(int index, int port) const {
    const Flow* flow = results_.find({index, port});
    return flow ? flow->signals : nullptr;
}

Sum Recorded::sum(int index, int port) const {
    const Flow* flow = results_.find({index, port});
    return flow ? flow->totals.amount : Sum{};
}

std::span<const double> Recorded::byMonth(int index, int port) const {
    const Flow* flow = results_.find({index, port});
    if (!flow) return {};
    return std::span(byMonth_).subspan(static_cast<std::size_t>(flow - results_.flows.data()) * months_, months_);
}

std::string Recorded::whyMissing(int index, int port) const {
    if (!needs_.contains({index, port}) || signals(index, port)) return {};
    const std::string name = outputName(component(index), port);
    for (const Refusal& refusal : needs_.plan.refused) {
        if (refusal.output == OutputPort{index, port}) {
            return fmt::format("\"{}\" cannot be recorded unchanged: {}", name, refusal.reason);
        }
    }
    return fmt::format("\"{}\" is not recorded", name);
}

double Recorded::storedAtFirst(int index) const {
    const SourceIndex initial = component(index).series[SeriesKind::storage];
    return storage(index) && initial >= 0 ? static_cast<double>(series_.of(initial)->front()) : 0;
}

std::shared_ptr<const Floats> Recorded::ofGroup(int index, SeriesKind kind) const {
    const int group = component(index).group;
    const SourceIndex source = group < 0 ? kNoSource : model().groups[at(group)].series[kind];
    return source >= 0 ? series_.of(source) : nullptr;
}

Sum Recorded::rain(int index) const {
    const int group = component(index).group;
    return group < 0 ? Sum{} : rains_[at(group)];
}

}  // namespace kesto
