// The water balance of a run: of each component, each group and the whole network, from recorded signals and states.
#pragma once

#include <string>
#include <vector>

#include "results.h"
#include "series.h"

namespace kesto {

struct BalanceRow {
    enum class Level { component, group, network };
    Level level = Level::component;
    std::string name;
    std::string_view type;             // of components
    Carries carries = Carries::water;  // or a demand
    std::string notBalanced;           // why not; empty: it is
    double in = 0;                     // L, from those connected
    double gain = 0;                   // from outside, or made by design
    double out = 0;                    // to those connected, to users, or out of the network
    double loss = 0;                   // by design
    double storageChange = 0;
    double error = 0;      // in + gain - out - loss - storageChange
    double relative = 0;   // to what went through
    double tolerance = 0;  // error that rounding to single precision explains

    bool isOff() const;
};
std::string_view toText(BalanceRow::Level level);

struct Balance {
    std::vector<BalanceRow> rows;  // the network, then groups, then components
    bool isOff() const;
};

// `results` must hold all outputs that can be recorded; `plan` tells why others are not.
Balance balanceOf(const Results& results, const RecordingPlan& plan, SeriesValues& series);

// A table for people; a CSV file; its name is returned.
std::string toText(const Balance& balance);
std::string writeBalanceCsv(const Balance& balance, const std::string& folder);

}  // namespace kesto
