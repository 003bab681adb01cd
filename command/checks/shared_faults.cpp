#include "shared_faults.h"

#include <fmt/format.h>

#include "checks.h"

namespace kesto {

void SharedFaults::addError(const Place& place, const Component& component, const std::string& before,
                            const std::string& after) {
    add(nullptr, place, component, before, after);
}

void SharedFaults::addWarning(const WarningCode& code, const Place& place, const Component& component,
                              const std::string& before, const std::string& after) {
    add(&code, place, component, before, after);
}

void SharedFaults::add(const WarningCode* code, const Place& place, const Component& component,
                       const std::string& before, const std::string& after) {
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
        if (fault.code) {
            diagnostics.warning(*fault.code, fault.place, text, fault.components == 1 ? fault.first->name : "");
        } else {
            diagnostics.error(fault.place, text);
        }
    }
}

}  // namespace kesto
