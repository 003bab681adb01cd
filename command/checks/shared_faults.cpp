#include "shared_faults.h"

#include <fmt/format.h>

#include "checks.h"

namespace kesto {

void SharedFaults::addError(ErrorName code, const Place& place, const Component& component, const std::string& before,
                            const std::string& after) {
    add(code, place, component, before, after);
}

void SharedFaults::addWarning(WarningName code, const Place& place, const Component& component,
                              const std::string& before, const std::string& after) {
    add(code, place, component, before, after);
}

void SharedFaults::add(Code code, const Place& place, const Component& component, const std::string& before,
                       const std::string& after) {
    const std::string key = fmt::format("{}|{}|{}|{}", toString(place), component.type->name, before, after);
    const auto [found, isNew] = index_.emplace(key, faults_.size());
    if (isNew) faults_.push_back({code, place, &component, before, after});
    ++faults_[found->second].components;
}

void SharedFaults::report(Diagnostics& diagnostics) const {
    for (const Fault& fault : faults_) {
        const std::string text =
            fmt::format("{} {} ({}){}{}", fault.before, nameOf(*fault.first), fault.first->type->name,
                        fault.components > 1 ? fmt::format(" and {} more", fault.components - 1) : "", fault.after);
        const std::string component = fault.components == 1 ? fault.first->name : "";
        if (const auto* error = std::get_if<ErrorName>(&fault.code)) {
            diagnostics.error(*error, fault.place, text, component);
        } else {
            diagnostics.warning(std::get<WarningName>(fault.code), fault.place, text, component);
        }
    }
}

}  // namespace kesto
