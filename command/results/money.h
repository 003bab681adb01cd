// What a run costs, by the prices and the capital of its model. A year has 365.25 days.
#pragma once

#include <optional>
#include <string>

#include "account.h"
#include "multiplicity.h"
#include "recorded.h"

namespace kesto {

inline constexpr double kLitresPerM3 = 1000;

// Of the whole network; sums of money are of a year, but for the capital. What the model has no price for is not known.
struct NetworkCosts {
    double years = 0;
    double mainsLitres = 0;        // of the run
    std::optional<double> energy;  // kWh of the run that machines use, less what they yield; none where there are none
    std::optional<double> heat;    // kWh of the run that evaporation takes up, below 0, and radiation brings
    std::optional<double> capital, annuity;
    std::optional<double> mains, sewage, energyCost, operation, capacity;

    std::optional<double> running() const;  // of mains water, sewage, energy and operation, so far as known
    std::optional<double> yearly(bool countsCapacity) const;
};

// Of a component, as often as it counts.
struct ComponentCosts {
    double capital, annuity;
};

// What a network saves against another, each not a number where it has none, but nothing where a price, capital or
// energy is not known of both.
struct Savings {
    double mains;                   // litres of the run
    std::optional<double> energy;   // kWh of the run
    std::optional<double> running;  // money a year
    std::optional<double> costPerM3, payback;
};
Savings savingsOf(const NetworkCosts& now, const NetworkCosts& before);

// Why a run has nothing that it can be compared with.
std::string withoutBaseline(const Economics& economics, const std::string& why);

// What an even payment each year makes of a sum that is spent now, over so many years.
double annuityOf(double capital, double interest, double years);
// What an even payment each year is worth now.
double presentValueOf(double payment, double interest, double years);

class Money {
  public:
    Money(const Recorded& recorded, const Results& results, const Multiplicity& multiplicity, const Account& account);

    const NetworkCosts& network() const { return network_; }
    std::optional<ComponentCosts> of(int component) const;
    double countOf(int component) const { return multiplicity_.of(component).greatest; }  // how many are built

    // A year's costs of all that a group holds: annuities, energy and operation; nothing where nothing in it has
    // capital.
    std::optional<double> ofGroup(int group) const;

  private:
    struct Booked {
        std::optional<double> annuity, energy, operation;
    };
    void addCapital();
    void addBooked();
    void addWater(const Account& account);

    const Recorded& recorded_;
    const Results& results_;
    const Multiplicity& multiplicity_;
    const Economics& economics_;
    NetworkCosts network_;
    std::vector<Booked> groups_;
};

}  // namespace kesto
