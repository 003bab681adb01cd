#include "path_bypass.h"

namespace kesto {

namespace {

// What it lacks is what its output asks for, and not a part of what it needs itself.
bool asksForOthers(const Type& type) {
    return type.service.unmet && type.service.reads == Amounts::out1;
}

}  // namespace

Bypass::Bypass(const Recorded& recorded, const WaterPaths& paths) {
    std::map<int, double> came, given;
    for (const Movement& movement : paths.movements()) {
        if (!movement.isAsked) continue;
        if (movement.to != kOutside && asksForOthers(recorded.type(movement.to))) came[movement.to] += movement.litres;
        if (movement.from != kOutside) given[movement.from] += movement.litres;
    }
    for (const auto& [store, litres] : came) {
        const double all = given[store];
        if (litres > 0 && litres <= all) shares_[store] = litres / all;
    }
}

bool Bypass::isEntered(const Movement& movement) const {
    return movement.isAsked && shares_.contains(movement.to);
}

double Bypass::share(const Movement& movement) const {
    const auto known = shares_.find(movement.from);
    return movement.isAsked && known != shares_.end() ? known->second : 0;
}

}  // namespace kesto
