// What things cost: prices of the model, capital of brands and components.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "place.h"

namespace kesto {

// What a component costs to buy and build, and for how many years it lasts.
struct Capital {
    double fixed = 0;
    double perSize = 0;                             // per unit of the component's size
    std::vector<std::pair<double, double>> bySize;  // size and capital, ascending; between two sizes along a line
    std::optional<double> life;                     // years
    bool isGiven = false;                           // false: the life alone, or nothing
    Place place;

    double of(double size) const;
};

// [economics]. What is not given is not counted, and figures that need it do not appear.
struct Economics {
    bool isGiven = false;
    std::string currency;
    std::optional<double> waterPrice;   // per m3 of mains water
    std::optional<double> sewagePrice;  // per m3 of sewage
    std::optional<double> energyPrice;  // per kWh
    double interest = 0;                // a year, as a fraction
    std::optional<double> horizon;      // years
    bool countsCapacity = false;        // the capacity cost that the engine books is one of the yearly costs
    std::vector<int> sewageTo;          // components whose water is billed as sewage; none: as much as of mains water
    std::string baseline;               // scenario that the run is compared with; empty: none
    Place place;
};

}  // namespace kesto
