#include "figure_list.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace kesto {

namespace {

using enum FigureOf;

constexpr FigureInfo kFigures[] = {
    {network, "rain", "L", "rain on surfaces and soil"},
    {network, "drawn", "L", "from the ground, rivers and other sources"},
    {network, "mains", "L", "demands that no component answers"},
    {network, "mains_peak", "L", "the most of them in one step", true},
    {network, "discharged", "L", "to water bodies and open ends"},
    {network, "used", "L", "by demand sources, which let nothing go"},
    {network, "evaporated", "L", "evaporation"},
    {network, "infiltrated", "L", "infiltration"},
    {network, "lost", "L", "losses of links and works"},
    {network, "storage_change", "L", "how much more the stores hold at the end than at the start"},
    {network, "created", "L", "water from nothing"},
    {network, "destroyed", "L", "water that vanishes"},

    {network, "energy", "kWh", "energy of machines: used, less yielded"},
    {network, "heat", "kWh", "heat that evaporation takes up, below 0, and net radiation brings"},

    {money, "capital", "money", "to buy and build all that has capital"},
    {money, "annuity", "money/a", "the capital as an even payment each year of its life"},
    {money, "mains_cost", "money/a", "mains water of a year"},
    {money, "sewage_cost", "money/a", "sewage of a year"},
    {money, "energy_cost", "money/a", "energy of a year"},
    {money, "operation_cost", "money/a", "operation cost that is booked, of a year"},
    {money, "capacity_cost", "money/a", "capacity cost that is booked, of a year"},
    {money, "running_cost", "money/a", "mains water, sewage, energy and operation of a year"},
    {money, "yearly_cost", "money/a", "annuity and running cost; with the capacity cost if the model says so"},
    {money, "present_cost", "money", "the yearly costs of the horizon, worth now"},

    {savings, "saved_mains", "L", "mains water of the baseline less that of the run"},
    {savings, "saved_energy", "kWh", "energy of the baseline less that of the run"},
    {savings, "saved_running_cost", "money/a", "running cost of the baseline less that of the run"},
    {savings, "cost_per_m3_saved", "money/m3",
     "additional annuity, energy and operation for each m3 of mains water saved"},
    {savings, "payback", "a", "additional capital over the running cost saved"},

    {service, "demand", "L", "what was asked of it"},
    {service, "served", "L", "the demand less what was unmet"},
    {service, "unmet", "L", "what it could not serve; of a service reservoir what it served without having it"},
    {service, "reliability_volume", "-", "served as a fraction of the demand"},
    {service, "reliability_time", "-", "steps served in full as a fraction of the steps with a demand"},
    {service, "days_short", "d", "steps in which more than a millionth of the demand was unmet"},
    {service, "longest_shortage", "d", "the most of them in a row", true},
    {service, "unmet_jan", "L", "unmet in all Januaries of the run"},
    {service, "unmet_feb", "L", "in all Februaries"},
    {service, "unmet_mar", "L", "in March"},
    {service, "unmet_apr", "L", "in April"},
    {service, "unmet_may", "L", "in May"},
    {service, "unmet_jun", "L", "in June"},
    {service, "unmet_jul", "L", "in July"},
    {service, "unmet_aug", "L", "in August"},
    {service, "unmet_sep", "L", "in September"},
    {service, "unmet_oct", "L", "in October"},
    {service, "unmet_nov", "L", "in November"},
    {service, "unmet_dec", "L", "in December"},

    {evaporation, "evaporation_booked", "L", "evaporation by the weather, booked whether or not there is water"},
    {evaporation, "evaporation_actual", "L", "booked evaporation less the shortfall"},
    {evaporation, "evaporation_booked_depth", "mm/a", "booked evaporation as a depth in a year of 365.25 days"},
    {evaporation, "evaporation_actual_depth", "mm/a", "actual evaporation likewise"},

    {capital, "capital", "money", "to buy and build it, as often as it counts"},
    {capital, "annuity", "money/a", "as an even payment each year of its life"},
    {source, "cost_per_m3", "money/m3", "annuities, energy and operation of its group for each m3 that it served"},

    {peak, "peak", "L", "the most that left it, or reached it if it is a recorder, in one step", true},
};

bool hasTerm(const Type& type, Term term) {
    return std::any_of(type.balance.terms.begin(), type.balance.terms.end(),
                       [&](const BalanceTerm& one) { return one.term == term; });
}

}  // namespace

bool isOfNetwork(FigureOf of) {
    return of == network || of == money || of == savings;
}

bool has(const Type& type, FigureOf of) {
    switch (of) {
        case network:
        case money:
        case savings:
            return false;
        case capital:
            return true;
        case service:
        case source:
            return type.service.unmet != nullptr;
        case evaporation:
            return hasTerm(type, Term::evaporated) && hasTerm(type, Term::takenForDelivered);
        case peak:
            break;
    }
    return type.peakOf >= 0;
}

std::span<const FigureInfo> allFigures() {
    return kFigures;
}

const FigureInfo& figureInfo(std::string_view name, bool ofNetwork) {
    const auto isIt = [&](const FigureInfo& one) { return one.name == name && isOfNetwork(one.of) == ofNetwork; };
    const auto* const found = std::find_if(std::begin(kFigures), std::end(kFigures), isIt);
    if (found == std::end(kFigures)) throw std::logic_error("no figure has this name");
    return *found;
}

std::string namesOf(FigureOf of) {
    if (isOfNetwork(of)) return "network";
    if (of == capital) return "components with capital";
    std::string names;
    for (const Type& type : allTypes()) {
        if (has(type, of)) names += (names.empty() ? "" : ", ") + std::string(type.name);
    }
    return names;
}

std::string figuresJson() {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const FigureInfo& figure : kFigures) {
        list.push_back({{"of", namesOf(figure.of)},
                        {"name", figure.name},
                        {"unit", figure.unit},
                        {"dated", figure.isDated},
                        {"meaning", figure.meaning}});
    }
    return list.dump(2) + "\n";
}

}  // namespace kesto
