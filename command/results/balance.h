// The water balance of a run: of each component, each group and the whole network, from recorded signals and states.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "shown_unit.h"
#include "water_paths.h"

namespace kesto {

// in + rain + drawn + released + taken for delivered + created
//     = out + evaporated + infiltrated + lost + destroyed + storage change + error
enum class Column : std::uint8_t {
    in,
    rain,
    drawn,
    released,
    takenForDelivered,
    created,
    out,
    evaporated,
    infiltrated,
    lost,
    destroyed,
    storageChange,
    error,
};
inline constexpr std::size_t kColumns = 13;

struct ColumnInfo {
    std::string_view name;     // in files: "taken_for_delivered"
    std::string_view heading;  // in the table
};
const ColumnInfo& info(Column column);

struct BalanceRow {
    enum class Level { component, group, network };
    Level level = Level::component;
    std::string name;
    std::string_view type;             // of components
    Carries carries = Carries::water;  // or a demand: the water that it asks for
    std::string notBalanced;           // why not; empty: it is
    std::array<double, kColumns> litres{};
    double relative = 0;   // error, to what went through
    double tolerance = 0;  // error that rounding to single precision explains [L]

    double& operator[](Column column) { return litres[static_cast<std::size_t>(column)]; }
    double operator[](Column column) const { return litres[static_cast<std::size_t>(column)]; }
    bool isOff() const;
};
std::string_view toText(BalanceRow::Level level);

struct Balance {
    // The network, then groups, then components; the network alone where only its border was recorded.
    std::vector<BalanceRow> rows;
    bool isOff() const;
};

Balance balanceOf(const Recorded& recorded, const Outlets& outlets, const Multiplicity& multiplicity,
                  const ComponentSums& sums, const WaterPaths& paths);

// A table for people; a CSV file; its name is returned.
std::string toText(const Balance& balance, Detail detail);
std::string writeBalanceCsv(const Balance& balance, const std::string& folder);

}  // namespace kesto
