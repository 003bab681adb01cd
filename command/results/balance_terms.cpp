#include "balance_terms.h"

#include <algorithm>

namespace kesto {

namespace {

constexpr double kPi = 3.141592653589793;

// As the engine gets it.
double single(double value) {
    return static_cast<double>(static_cast<float>(value));
}

// Extraterrestrial radiation [kJ/m2] of a day of the year, counted from 0.
double radiation(double latitude, int day) {
    const double phi = latitude / 180 * kPi;
    const double angle = 2 * kPi / 365 * day;
    const double declination = -0.409 * std::cos(angle + 0.16);
    const double sunset = std::acos(-std::tan(phi) * std::tan(declination));
    return 118108.8 / kPi * (1 + 0.034 * std::cos(angle - 0.05)) *
           (sunset * std::sin(phi) * std::sin(declination) + std::cos(phi) * std::cos(declination) * std::sin(sunset));
}

}  // namespace

BalanceTerms::BalanceTerms(const Model& model, const Component& component, SeriesValues& series)
    : model_(model),
      component_(component),
      series_(series),
      size_(single(component.hasSize ? component.size : component.type->size.standard.value_or(component.size))),
      dt_(single(model.simulation.timeStep)) {
    for (const Parameter& known : component.type->parameters) {
        const auto number = static_cast<std::size_t>(known.number);
        if (parameters_.size() <= number) parameters_.resize(number + 1, 0);
        parameters_[number] = known.standard.value_or(0);
        if (component.brand < 0) continue;
        const auto& given = model.brands[static_cast<std::size_t>(component.brand)].specifications;
        const auto found = given.find(known.number);
        if (found != given.end()) parameters_[number] = single(found->second.value);
    }
    rain_ = ofGroup(SeriesKind::rainfall);
    temperature_ = ofGroup(SeriesKind::temperature);
    lowest_ = ofGroup(SeriesKind::temperatureMin);
    highest_ = ofGroup(SeriesKind::temperatureMax);
    for (const SeriesKind kind : {SeriesKind::multiplier, SeriesKind::demand}) {
        if (component.series[kind] >= 0) own_ = series.of(component.series[kind]);
    }
}

std::shared_ptr<const Floats> BalanceTerms::ofGroup(SeriesKind kind) const {
    if (component_.group < 0) return nullptr;
    const SourceIndex source = model_.groups[static_cast<std::size_t>(component_.group)].series[kind];
    return source >= 0 ? series_.of(source) : nullptr;
}

double BalanceTerms::parameter(int number) const {
    const auto index = static_cast<std::size_t>(number);
    return index < parameters_.size() ? parameters_[index] : 0;
}

double BalanceTerms::valueOf(const std::shared_ptr<const Floats>& values, std::size_t step) const {
    return values ? static_cast<double>((*values)[step]) : 0;
}

double BalanceTerms::storageFactor() const {
    for (const SeriesNeed& need : component_.type->series) {
        // Soil is counted for one square metre.
        if (need.kind == SeriesKind::storage && need.unit == "mm") {
            return component_.code == code::kSoilStore ? 1 : size_;
        }
    }
    return 1;
}

double BalanceTerms::seepage(double volume) const {
    const double v = volume / 1e9;
    const double head = std::max(parameter(30) + parameter(31) * v + parameter(32) * v * v, 0.0);
    return std::max(0.0, head * parameter(34) + parameter(33)) * dt_;
}

// Hargreaves and Samani, as the green area has it [mm].
double BalanceTerms::evapotranspiration(std::size_t step) const {
    const Day day = model_.simulation.start + static_cast<Day>(step);
    const int dayOfYear = static_cast<int>(day - dayOf({dateOf(day).year, 1, 1}));
    const double low = valueOf(lowest_, step), high = valueOf(highest_, step);
    return 0.0023 * radiation(model_.simulation.latitude.value_or(0), dayOfYear) / 2450 * ((low + high) / 2 + 17.8) *
           std::sqrt(high - low);
}

// Of one square metre.
StepTerms BalanceTerms::soil(std::size_t step, const StepSignals& signals) const {
    const double rain = valueOf(rain_, step);
    const double entering = parameter(58) * rain;
    const double evaporation =
        parameter(59) * 16 * std::pow(10 * valueOf(temperature_, step) / 60, single(1.7)) * 12 / 360 * dt_;
    const double level = std::min(std::max(entering - evaporation, 0.0) + signals.before, parameter(1));
    const double drained = parameter(28) * level * dt_;
    const double outflow = dt_ * parameter(57) * std::max(level - parameter(60) * parameter(1), 0.0);
    return {rain + std::max(drained + outflow - level, 0.0),
            rain - entering + std::min(evaporation, entering) + drained, 0};
}

StepTerms BalanceTerms::at(std::size_t step, const StepSignals& s) const {
    const double rain = valueOf(rain_, step) * size_;
    const double stored = s.before * storageFactor();
    switch (component_.code) {
        case 1:
        case 2:
        case 4:
        case 5:
        case 6:
        case 7:
        case 8:
        case 10:
            return {s.out[1], 0, 0};
        case code::kIndependentUse:
            return {s.out[1], s.out[1], 0};
        case 11:
            return {0, parameter(28) * s.in[0], 0};
        case 22:
            return {0, std::min(stored * parameter(28) * dt_, stored + s.in[0]), 0};
        case 26:
        case 43:
            return {0, 0, s.out[0]};
        case 28:
            return {rain, rain * parameter(27), 0};
        case 29:
            return {rain, std::min(stored * (parameter(27) + parameter(28)) * dt_, rain + stored), 0};
        case code::kServiceReservoir:
            return {s.out[0] + std::max(s.in[0] - s.before - s.out[0], 0.0), 0, s.in[0]};
        case code::kMultiplier:
            return {s.in[0] * (valueOf(own_, step) - 1), 0, 0};
        case 27:
        case 37:
        case 40:
        case 48:
            return {parameter(2) * s.in[0], 0, 0};
        case 35:
        case 41:
        case 42:
        case 47:
            return {0, parameter(2) * s.in[0], 0};
        case 38:
            return {0, 0, std::min(dt_ * parameter(1) * size_, s.in[0])};
        case code::kReservoir:
            return {0, seepage(s.before), s.in[1] - s.out[0]};
        case code::kTank:
            return {0, 0, s.in[1] - s.out[0]};
        case 45:
            return {valueOf(own_, step) * size_ / 100, 0, 0};
        case 46:
            return {rain + s.out[1],
                    stored * parameter(28) * dt_ + evapotranspiration(step) * (1 - parameter(27)) * size_, 0};
        case 49:
        case 52:
            return {s.in[0], 0, 0};
        case 54:
            return {s.out[1], 0, 0};
        case code::kSoilStore:
            return soil(step, s);
        default:
            return {};
    }
}

}  // namespace kesto
