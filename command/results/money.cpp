#include "money.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "summary.h"

namespace kesto {

namespace {

using Known = std::optional<double>;

void add(Known& sum, const Known& more) {
    if (more) sum = sum.value_or(0) + *more;
}

Known times(const Known& a, const Known& b) {
    return a && b ? Known(*a * *b) : std::nullopt;
}

// Whether running costs hold the same. A network without machines has no cost of energy, whatever the price.
bool havePricesAlike(const NetworkCosts& a, const NetworkCosts& b) {
    const auto lacksPrice = [](const NetworkCosts& costs) {
        return costs.energy.value_or(0) != 0 && !costs.energyCost;
    };
    const bool isEnergyAlike = !(a.energyCost && lacksPrice(b)) && !(b.energyCost && lacksPrice(a));
    return a.mains.has_value() == b.mains.has_value() && a.sewage.has_value() == b.sewage.has_value() && isEnergyAlike;
}

}  // namespace

std::string withoutBaseline(const Economics& economics, const std::string& why) {
    return fmt::format("[economics]: the baseline \"{}\" cannot be run: {}", economics.baseline, why);
}

double annuityOf(double capital, double interest, double years) {
    if (interest == 0) return capital / years;
    // C libraries differ in the last digit of these functions: in more digits, all give the same double.
    const auto rate = static_cast<long double>(interest);
    const long double rest = -std::expm1(-static_cast<long double>(years) * std::log1p(rate));
    return static_cast<double>(static_cast<long double>(capital) * rate / rest);
}

double presentValueOf(double payment, double interest, double years) {
    return payment / annuityOf(1, interest, years);
}

std::optional<double> NetworkCosts::running() const {
    Known sum;
    for (const Known& cost : {mains, sewage, energyCost, operation}) {
        add(sum, cost);
    }
    return sum;
}

std::optional<double> NetworkCosts::yearly(bool countsCapacity) const {
    Known sum = running();
    add(sum, annuity);
    if (countsCapacity) add(sum, capacity);
    return sum;
}

Savings savingsOf(const NetworkCosts& now, const NetworkCosts& before) {
    constexpr double kNoSaving = std::numeric_limits<double>::quiet_NaN();
    Savings savings{before.mainsLitres - now.mainsLitres, {}, {}, {}, {}};
    if (before.energy || now.energy) savings.energy = before.energy.value_or(0) - now.energy.value_or(0);
    const auto running = now.running();
    if (!running || !havePricesAlike(now, before)) return savings;
    savings.running = before.running().value_or(0) - *running;
    const auto isKnown = [](const Known& after, const Known& first) { return after || first; };
    const auto more = [](const Known& after, const Known& first) { return after.value_or(0) - first.value_or(0); };
    if (isKnown(now.annuity, before.annuity) || isKnown(now.energyCost, before.energyCost) ||
        isKnown(now.operation, before.operation)) {
        const double spent = more(now.annuity, before.annuity) + more(now.energyCost, before.energyCost) +
                             more(now.operation, before.operation);
        savings.costPerM3 = savings.mains > 0 ? spent * now.years * kLitresPerM3 / savings.mains : kNoSaving;
    }
    if (isKnown(now.capital, before.capital)) {
        const double capital = more(now.capital, before.capital);
        savings.payback = *savings.running > 0 && capital >= 0 ? capital / *savings.running : kNoSaving;
    }
    return savings;
}

Money::Money(const Recorded& recorded, const Results& results, const Multiplicity& multiplicity, const Account& account)
    : recorded_(recorded),
      results_(results),
      multiplicity_(multiplicity),
      economics_(recorded.model().economics),
      groups_(recorded.model().groups.size()) {
    network_.years = static_cast<double>(recorded.steps()) / kDaysPerYear;
    network_.mainsLitres = account.total(true, AccountKind::mains);
    addBooked();
    addCapital();
    addWater(account);
}

std::optional<ComponentCosts> Money::of(int component) const {
    const Capital capital = capitalOf(recorded_.model(), recorded_.component(component));
    if (!capital.isGiven) return std::nullopt;
    const Known years = capital.life ? capital.life : economics_.horizon;
    const double all = countOf(component) * capital.of(recorded_.component(component).size);
    return ComponentCosts{all, annuityOf(all, economics_.interest, years.value_or(std::nan("")))};
}

void Money::addCapital() {
    for (int i = 0; i < recorded_.components(); ++i) {
        const auto costs = of(i);
        if (!costs) continue;
        add(network_.capital, costs->capital);
        add(network_.annuity, costs->annuity);
        const int group = recorded_.component(i).group;
        if (group >= 0) add(groups_[at(group)].annuity, costs->annuity);
    }
}

// Energy and costs that the engine books, as often as a component counts.
void Money::addBooked() {
    const std::vector<BookedEnergy> energy = energyOfGroups(recorded_.model());
    Known operation, capacity;
    for (const PotentialSeries& series : results_.potentials) {
        const int group = recorded_.model().findGroup(series.group);
        const Known sum = series.total;
        if (series.potential == kEnergy && energy[at(group)].isHeat()) {
            add(network_.heat, sum);
        } else if (series.potential == kEnergy) {
            add(groups_[at(group)].energy, sum);
            add(network_.energy, sum);
        }
        if (series.potential == kOperation) {
            add(groups_[at(group)].operation, sum);
            add(operation, sum);
        }
        if (series.potential == kCapacity) add(capacity, sum);
    }
    if (!economics_.isGiven || network_.years == 0) return;
    // Where all are 0 the model has no such costs.
    const auto yearly = [&](const Known& sum) {
        return sum && *sum != 0 ? Known(*sum / network_.years) : std::nullopt;
    };
    network_.operation = yearly(operation);
    network_.capacity = yearly(capacity);
    network_.energyCost = times(yearly(network_.energy), economics_.energyPrice);
}

void Money::addWater(const Account& account) {
    if (network_.years == 0) return;
    const auto yearly = [&](double litres, const Known& price) {
        return times(litres / kLitresPerM3 / network_.years, price);
    };
    network_.mains = yearly(network_.mainsLitres, economics_.waterPrice);
    double sewage = economics_.sewageTo.empty() ? network_.mainsLitres : 0;
    for (const AccountEntry& entry : account.entries) {
        const auto& to = economics_.sewageTo;
        const bool isBilled =
            entry.kind == AccountKind::waterBody && std::find(to.begin(), to.end(), entry.component) != to.end();
        if (isBilled) sewage += entry.litres;
    }
    network_.sewage = yearly(sewage, economics_.sewagePrice);
}

std::optional<double> Money::ofGroup(int group) const {
    const Booked& booked = groups_[at(group)];
    if (!booked.annuity || network_.years == 0) return std::nullopt;
    const double energy = booked.energy.value_or(0) * economics_.energyPrice.value_or(0);
    return *booked.annuity + (booked.operation.value_or(0) + energy) / network_.years;
}

}  // namespace kesto
