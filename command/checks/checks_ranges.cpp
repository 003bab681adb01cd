// Sizes and parameters beyond their range in the catalogue: errors where the model then means nothing, warnings where
// the engine goes on.
#include <fmt/format.h>

#include "checks.h"
#include "shared_faults.h"

namespace kesto {

namespace {

// A parameter of a component as its brand gives it.
struct Given {
    const Parameter* parameter;
    double value;
    Place place;
};

// A percentage that was meant for a fraction.
std::string hint(const Range& range, double value) {
    if (range.perStep || range.high != 1 || value < 2 || value > 100) return "";
    return fmt::format("; {} % is {}", value, value / 100);
}

class RangeChecks {
  public:
    RangeChecks(const Model& model, SeriesValues& series, Diagnostics& diagnostics)
        : model_(model), series_(series), diagnostics_(diagnostics) {}

    void check() {
        for (const Component& component : model_.components) {
            checkSize(component);
            const std::vector<Given> given = parametersOf(component);
            checkParameters(component, given);
            checkRates(component, given);
            checkInitialStorage(component, given);
        }
        shared_.report(diagnostics_);
    }

  private:
    void tell(Beyond beyond, WarningName name, const Place& place, const Component& component,
              const std::string& text) {
        const std::string whole = fmt::format("{} ({}): {}", nameOf(component), component.type->name, text);
        if (beyond == Beyond::error) {
            diagnostics_.error("wrong-value", place, whole, component.name);
        } else {
            diagnostics_.warning(name, place, whole, component.name);
        }
    }

    void checkSize(const Component& component) {
        const Size& size = component.type->size;
        // Splits correct a percentage, which may well begin beyond.
        if (!component.hasSize || !component.splits.empty()) return;
        const Beyond beyond = size.range.beyond(component.size);
        if (beyond == Beyond::allowed) return;
        tell(beyond, "odd-size", component.sizePlace, component,
             fmt::format("its {} is {}; expected {}", size.meaning, withUnit(component.size, size.unit),
                         toText(size.range)));
    }

    std::vector<Given> parametersOf(const Component& component) const {
        std::vector<Given> all;
        if (component.brand < 0) return all;
        const auto& specifications = model_.brands[at(component.brand)].specifications;
        for (const Parameter& parameter : component.type->parameters) {
            const auto found = specifications.find(parameter.number);
            if (found != specifications.end()) all.push_back({&parameter, found->second.value, found->second.place});
        }
        return all;
    }

    const std::string& brandOf(const Component& component) const { return model_.brands[at(component.brand)].name; }

    void checkParameters(const Component& component, const std::vector<Given>& given) {
        for (const auto& [parameter, value, place] : given) {
            const Range& range = parameter->range;
            const Beyond beyond = range.beyond(value * (range.perStep ? model_.simulation.timeStep : 1));
            if (beyond == Beyond::allowed) continue;
            const std::string is = fmt::format("brand \"{}\": {} is {}", brandOf(component), parameter->name,
                                               withUnit(value, parameter->unit));
            if (beyond == Beyond::error) {
                shared_.addError("wrong-value", place, component,
                                 fmt::format("{}; expected {}{}; read by", is, toText(range), hint(range, value)));
            } else if (range.perStep) {
                shared_.addWarning(
                    "odd-rate", place, component,
                    fmt::format("{}, which takes {:.4g} times what is stored in a step of {} d: more leaves than "
                                "was there; expected {}; read by",
                                is, value * model_.simulation.timeStep, model_.simulation.timeStep, toText(range)));
            } else {
                shared_.addWarning(range.high == 1 ? WarningName("odd-fraction") : WarningName("odd-value"), place,
                                   component,
                                   fmt::format("{}; expected {}{}; read by", is, toText(range), hint(range, value)));
            }
        }
    }

    // Rates that are possible one by one can ask together for more than there is.
    void checkRates(const Component& component, const std::vector<Given>& given) {
        double sum = 0;
        std::string names;
        const Given* last = nullptr;
        for (const Given& one : given) {
            if (!one.parameter->range.sharesStore) continue;
            if (one.parameter->range.beyond(one.value * model_.simulation.timeStep) != Beyond::allowed) return;
            names += fmt::format("{}{}", names.empty() ? "" : " and ", one.parameter->name);
            sum += one.value * model_.simulation.timeStep;
            last = &one;
        }
        if (!last || last->parameter->range.beyond(sum) == Beyond::allowed) return;
        shared_.addWarning(
            "odd-rate", last->place, component,
            fmt::format("brand \"{}\": {} together take {:.4g} times what is stored in a step of {} d: more "
                        "leaves than was there; read by",
                        brandOf(component), names, sum, model_.simulation.timeStep));
    }

    // What is above the capacity leaves in the first step.
    void checkInitialStorage(const Component& component, const std::vector<Given>& given) {
        const SourceIndex source = component.series[SeriesKind::storage];
        if (source < 0) return;
        const auto values = series_.of(source);
        double capacity = 0;
        std::string_view unit;
        if (component.type->size.range.limitsStore) {
            capacity = component.size;
            unit = component.type->size.unit;
        }
        for (const Given& one : given) {
            if (!one.parameter->range.limitsStore) continue;
            capacity = one.value;
            unit = one.parameter->unit;
        }
        const double initial = values ? static_cast<double>(values->front()) : 0;
        // Impossible values have been reported.
        if (unit.empty() || capacity < 0 || initial < 0 || !(initial > capacity)) return;
        tell(Beyond::warning, "over-full", series_.placeOf(source, 0), component,
             fmt::format("initial_storage is {}, but it can hold {}", withUnit(values->front(), unit),
                         withUnit(capacity, unit)));
    }

    const Model& model_;
    SeriesValues& series_;
    Diagnostics& diagnostics_;
    SharedFaults shared_;
};

}  // namespace

void checkRanges(const Model& model, SeriesValues& series, Diagnostics& diagnostics) {
    RangeChecks(model, series, diagnostics).check();
}

}  // namespace kesto
