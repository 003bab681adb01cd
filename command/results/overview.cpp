#include "overview.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <tuple>

#include "balance_steps.h"
#include "overview_parts.h"
#include "path_nodes.h"

namespace kesto {

namespace {

constexpr double kLeast = 1e-3;  // of a capacity: less is empty, and as little below it is full
constexpr std::size_t kMostStores = 12;

std::string labelOf(const Recorded& recorded, const std::vector<int>& components) {
    const bool areAlike = std::all_of(components.begin(), components.end(), [&](int component) {
        return &recorded.type(component) == &recorded.type(components.front());
    });
    if (components.size() == 1) return recorded.component(components.front()).name;
    return areAlike ? pluralOf(recorded.type(components.front())) : "stores and sources";
}

std::optional<ServiceOverview> serviceOf(const Recorded& recorded, const Multiplicity& multiplicity,
                                         const Figures& figures) {
    ServiceOverview service;
    std::vector<int> components;
    double inFull = 0;
    int timed = 0;
    for (int i = 0; i < recorded.components(); ++i) {
        if (!has(recorded.type(i), FigureOf::service)) continue;
        const auto value = [&](std::string_view name) { return figures.find(i, name)->value; };
        const double demand = value("demand"), served = value("served"), times = multiplicity.of(i).greatest;
        if (!std::isfinite(demand) || !std::isfinite(served)) return std::nullopt;
        components.push_back(i);
        service.demand += times * demand;
        service.served += times * served;
        if (const double share = value("reliability_time"); std::isfinite(share)) {
            inFull += share;
            ++timed;
        }
    }
    if (components.empty()) return std::nullopt;
    service.label = labelOf(recorded, components);
    service.components = static_cast<int>(components.size());
    if (timed > 0) service.daysInFull = inFull / timed;
    return service;
}

// Of stores that spill what they cannot hold.
std::optional<OverflowOverview> overflowOf(const Recorded& recorded, const Multiplicity& multiplicity) {
    OverflowOverview overflow;
    std::vector<int> components;
    for (int i = 0; i < recorded.components(); ++i) {
        const Type& type = recorded.type(i);
        const auto port = portNumber(type.out, "overflow");
        if (!port || type.balance.stored == Stored::nothing) continue;
        if (!recorded.signals(i, *port)) return std::nullopt;
        components.push_back(i);
        overflow.litres += totalOf(recorded, i, *port, multiplicity.of(i));
        for (const int index : recorded.inputs(i)) {
            const Connection& connection = recorded.connection(index);
            if (recorded.carriers().ofInput(i, connection.toPort) != Carries::water) continue;
            if (!recorded.signals(connection.from, connection.fromPort)) return std::nullopt;
            overflow.inflow += totalOf(recorded, connection.from, connection.fromPort, multiplicity.of(i));
        }
    }
    if (components.empty() || !std::isfinite(overflow.litres + overflow.inflow)) return std::nullopt;
    overflow.label = labelOf(recorded, components);
    return overflow;
}

// Those at home where appliances are whose use depends on them.
std::optional<double> personsOf(const Recorded& recorded, const Multiplicity& multiplicity) {
    std::map<int, double> byGroup;  // how many times each group counts
    for (int i = 0; i < recorded.components(); ++i) {
        const Component& component = recorded.component(i);
        const bool dependsOnThem = component.type->isAppliance() && component.code != code::kOutdoorUse &&
                                   component.code != code::kIndependentUse;
        if (!dependsOnThem || component.group < 0) continue;
        double& times = byGroup[component.group];
        times = std::max(times, multiplicity.of(i).greatest);
    }
    double persons = 0;
    std::map<const Floats*, double> means;
    for (const auto& [group, times] : byGroup) {
        const SourceIndex source = recorded.model().groups[at(group)].series[SeriesKind::occupancy];
        const auto values = source >= 0 ? recorded.series().of(source) : nullptr;
        if (!values) continue;
        const auto [mean, isNew] = means.emplace(values.get(), 0);
        for (std::size_t step = 0; isNew && step < recorded.steps(); ++step) {
            mean->second += static_cast<double>((*values)[step]) / static_cast<double>(recorded.steps());
        }
        persons += times * mean->second;
    }
    return persons > 0 && std::isfinite(persons) ? std::optional(persons) : std::nullopt;
}

// In the unit of the state.
std::optional<double> capacityOf(const Recorded& recorded, int component) {
    const Type& type = recorded.type(component);
    for (const std::string_view name : {"storage_capacity", "storage_depth"}) {
        const auto known = std::find_if(type.parameters.begin(), type.parameters.end(),
                                        [&](const Parameter& parameter) { return parameter.name == name; });
        if (known != type.parameters.end()) return BalanceInputs(recorded, component).parameter(known->number);
    }
    if (type.size.unit == "L") return recorded.component(component).size;
    return std::nullopt;
}

StoreOverview storeOf(const Recorded& recorded, const State& state, int component) {
    const auto largest = static_cast<double>(*std::max_element(state.values, state.values + recorded.steps()));
    const std::optional<double> capacity = capacityOf(recorded, component);
    const double whole = capacity.value_or(largest);
    StoreOverview store{component, state.unit, capacity, kLeast * whole, (1 - kLeast) * whole};
    const auto empty = static_cast<float>(store.emptyBelow), full = static_cast<float>(store.fullFrom);
    std::size_t emptyDays = 0, fullDays = 0;
    for (std::size_t step = 0; step < recorded.steps(); ++step) {
        emptyDays += state.values[step] <= empty ? 1U : 0U;
        fullDays += state.values[step] >= full ? 1U : 0U;
    }
    store.emptyShare = static_cast<double>(emptyDays) / static_cast<double>(recorded.steps());
    store.fullShare = static_cast<double>(fullDays) / static_cast<double>(recorded.steps());
    return store;
}

// What it can hold, or held at most where that is not bounded, in the unit of the state.
double largestLevel(const Recorded& recorded, const State& state, int component) {
    const std::optional<double> capacity = capacityOf(recorded, component);
    if (capacity && std::isfinite(*capacity)) return *capacity;
    return static_cast<double>(*std::max_element(state.values, state.values + recorded.steps()));
}

// The largest, as often as each counts. Of stores that are alike one stands for all.
void addStores(const Recorded& recorded, const Results& results, const Multiplicity& multiplicity, Overview& overview) {
    struct Candidate {
        double size;
        const State* state;
        int component;
    };
    std::vector<Candidate> candidates;
    std::set<std::tuple<int, double, double, double>> known;
    std::size_t count = 0;
    for (const State& state : results.states) {
        if (state.kind != SeriesKind::storage) continue;
        ++count;
        const int component = recorded.model().findComponent(state.name);
        double sum = 0, squares = 0;
        for (std::size_t step = 0; step < recorded.steps(); ++step) {
            const auto value = static_cast<double>(state.values[step]);
            sum += value;
            squares += value * value;
        }
        if (!std::isfinite(squares)) continue;
        const Component& of = recorded.component(component);
        if (!known.emplace(of.code, of.size, sum, squares).second) continue;
        const double perUnit = BalanceInputs(recorded, component).litresPerUnit();
        const double size = largestLevel(recorded, state, component) * perUnit * multiplicity.of(component).greatest;
        candidates.push_back({size, &state, component});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.size > b.size; });
    if (candidates.size() > kMostStores) candidates.resize(kMostStores);
    for (const Candidate& one : candidates) {
        overview.stores.push_back(storeOf(recorded, *one.state, one.component));
    }
    overview.moreStores = count - candidates.size();
}

}  // namespace

Overview overviewOf(const Recorded& recorded, const Results& results, const RunMonths& months,
                    const Multiplicity& multiplicity, const ComponentSums& sums, const WaterPaths& paths,
                    const Account& account, const Figures& figures, const std::vector<OutputPort>& kept) {
    Overview overview;
    overview.model = &recorded.model();
    overview.start = recorded.dayOf(0);
    overview.months = months;
    if (recorded.steps() == 0) return overview;
    overview.paths = pathsOf(recorded, sums, paths, account);
    overview.persons = personsOf(recorded, multiplicity);
    overview.service = serviceOf(recorded, multiplicity, figures);
    overview.overflow = overflowOf(recorded, multiplicity);
    addStores(recorded, results, multiplicity, overview);
    addMonths(recorded, results, multiplicity, sums, paths, account, overview);
    addSums(recorded, results, multiplicity, overview);
    addShown(recorded, results, kept, overview);
    return overview;
}

}  // namespace kesto
