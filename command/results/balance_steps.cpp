#include "balance_steps.h"

#include <cmath>

namespace kesto {

namespace {

constexpr double kPi = 3.141592653589793;

// As the engine gets it.
double single(double value) {
    return static_cast<double>(static_cast<float>(value));
}

// Of a day of the year, counted from 0.
double insolation(double latitude, int day) {
    const double phi = latitude / 180 * kPi;
    const double angle = 2 * kPi / 365 * day;
    const double declination = -0.409 * std::cos(angle + 0.16);
    const double sunset = std::acos(-std::tan(phi) * std::tan(declination));
    return 118108.8 / kPi * (1 + 0.034 * std::cos(angle - 0.05)) *
           (sunset * std::sin(phi) * std::sin(declination) + std::cos(phi) * std::cos(declination) * std::sin(sunset));
}

double valueOf(const std::shared_ptr<const Floats>& values, std::size_t step) {
    return values ? static_cast<double>((*values)[step]) : 0;
}

}  // namespace

std::vector<double> insolationOf(const Simulation& simulation) {
    std::vector<double> values;
    if (!simulation.latitude) return values;
    for (Day day = simulation.start; day <= simulation.end; ++day) {
        const int dayOfYear = static_cast<int>(day - dayOf({dateOf(day).year, 1, 1}));
        values.push_back(insolation(*simulation.latitude, dayOfYear));
    }
    return values;
}

BalanceSteps::BalanceSteps(const Model& model, const Component& component, SeriesValues& series,
                           const std::vector<double>& insolation)
    : model_(model), component_(component), series_(series), insolation_(insolation) {
    for (const Parameter& known : component.type->parameters) {
        const auto number = static_cast<std::size_t>(known.number);
        if (parameters_.size() <= number) parameters_.resize(number + 1, 0);
        parameters_[number] = single(known.standard.value_or(0));
        if (component.brand < 0) continue;
        const auto& given = model.brands[at(component.brand)].specifications;
        const auto found = given.find(known.number);
        if (found != given.end()) parameters_[number] = single(found->second.value);
    }
    current_.code = component.code;
    current_.size = single(component.hasSize ? component.size : component.type->size.standard.value_or(component.size));
    current_.timeStep = single(model.simulation.timeStep);
    current_.parameters = parameters_;
    rain_ = ofGroup(SeriesKind::rainfall);
    temperature_ = ofGroup(SeriesKind::temperature);
    lowest_ = ofGroup(SeriesKind::temperatureMin);
    highest_ = ofGroup(SeriesKind::temperatureMax);
    for (const SeriesKind kind : {SeriesKind::multiplier, SeriesKind::demand}) {
        if (component.series[kind] >= 0) given_ = series.of(component.series[kind]);
    }
}

std::shared_ptr<const Floats> BalanceSteps::ofGroup(SeriesKind kind) const {
    if (component_.group < 0) return nullptr;
    const SourceIndex source = model_.groups[at(component_.group)].series[kind];
    return source >= 0 ? series_.of(source) : nullptr;
}

double BalanceSteps::litresPerUnit() const {
    switch (component_.type->balance.stored) {
        case Stored::depth:
            return current_.size;
        case Stored::nothing:
        case Stored::underWay:
            return 0;
        case Stored::litres:
        case Stored::depthOfOneMetre2:
            break;
    }
    return 1;
}

void BalanceSteps::read(std::size_t step) {
    current_.rain = valueOf(rain_, step);
    current_.temperature = valueOf(temperature_, step);
    current_.temperatureMin = valueOf(lowest_, step);
    current_.temperatureMax = valueOf(highest_, step);
    current_.given = valueOf(given_, step);
    current_.insolation = step < insolation_.size() ? insolation_[step] : 0;
}

}  // namespace kesto
