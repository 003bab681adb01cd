// Catalogue: what becomes of each type's water, or of the demand that it passes on. Q and q are inputs and outputs, S
// what is stored; what the engine books as lost is named as such.
#include "catalogue_tables.h"

namespace kesto::tables {

namespace {

struct Row {
    std::string_view type;
    BalanceIdentity balance;
};

constexpr Carries kWater = Carries::water;
constexpr Carries kAsked = Carries::demand;
constexpr Carries kEither = Carries::same;

constexpr Row kRows[] = {
    {"appliance", {kWater, "drawn = wastewater", "what it draws, taken for delivered", "kind 9: all, to the ground"}},
    {"impervious_surface", {kWater, "rain = runoff + evaporation", "rain", "evaporation"}},
    {"pervious_surface",
     {kWater, "rain + S = runoff + evaporation + infiltration + S'", "rain", "evaporation and infiltration"}},
    {"green_area",
     {kWater, "rain + S + shortfall = runoff + evaporation + drainage + S'",
      "rain; the shortfall, which it loses all the same", "evaporation and drainage"}},
    {"soil_store",
     {kWater, "rain + S = runoff + evaporation + drainage + what does not enter + S'",
      "rain, counted for one square metre; what leaves beyond what it holds",
      "evaporation, drainage, and rain that does not enter"}},
    {"demand_source", {kAsked, "series = demand", "the series"}},
    {"tank", {kWater, "inflow + S = (demand - deficit) + overflow + S'"}},
    {"local_treatment", {kWater, "inflow + S = supplied + overflow + S'"}},
    {"rainwater_treatment", {kWater, "inflow + S = supplied + overflow + S'"}},
    {"greywater_treatment", {kWater, "inflow + S = supplied + overflow + S'"}},
    {"soakaway", {kWater, "inflow + S = overflow + infiltration + S'", {}, "infiltration"}},
    {"service_reservoir",
     {kWater, "refill + S + lack = demand + S'",
      "its refill, taken for delivered; what it serves and does not hold, from nowhere"}},
    {"reservoir", {kWater, "inflow + S = (demand - deficit) + overflow + seepage + S'", {}, "seepage"}},
    {"detention_basin", {kWater, "inflow + S = outflow + S'"}},
    {"wastewater_treatment", {kWater, "inflow = outflow"}},
    {"treatment_line", {kWater, "inflow = outflow + loss", {}, "loss", true}},
    {"membrane", {kWater, "inflow = permeate + concentrate"}},
    {"treatment_plant", {kAsked, "demand + loss = request", "its loss, asked for on top", {}, true}},
    {"gravity_link", {kWater, "inflow = outflow + loss", {}, "loss"}},
    {"supply_link", {kAsked, "demand + loss = request", "its loss, asked for on top"}},
    {"sewer_link", {kWater, "inflow = outflow + loss", {}, "loss"}},
    {"drainage_link", {kWater, "inflow = outflow + loss", {}, "loss"}},
    {"infiltration_link", {kWater, "inflow = outflow + infiltration", {}, "infiltration"}},
    {"well", {kAsked, "demand = abstracted + unmet"}},
    {"abstraction", {kAsked, "demand + loss = request", "its loss, asked for on top", {}, true}},
    {"potable_treatment", {kAsked, "demand + loss = request", "its loss, asked for on top", {}, true}},
    {"junction", {kEither, "sum of inflows = outflow"}},
    {"mixer", {kEither, "sum of inflows = outflow"}},
    {"multiplier", {kEither, "inflow + scaling = outflow", "what the scaling adds; below 0 what it takes away"}},
    {"splitter", {kEither, "inflow = first + second"}},
    {"delay", {kEither, "inflow + under way = outflow + under way'"}},
    {"connector", {kEither, "inflow + copy = first + second", "the copy"}},
    {"threshold_divider", {kEither, "inflow = below + above"}},
    {"threshold_switch", {kEither, "inflow = closed + open"}},
    {"quality_switch", {kAsked, "demand = below + above"}},
    {"quality_from_reservoir",
     {kWater, "demand = supply", "the supply: the reservoir is asked for it, whether or not it has it"}},
    {"quality_setter", {kEither, "inflow = outflow"}},
    {"quota_limiter", {kEither, "inflow = allowed + excess"}},
    {"logger", {kEither, "inflow = received"}},
    {"water_body", {kEither, "inflow = received"}},
    {"hydropower", {kWater, "inflow = outflow"}},
    {"pumped_storage", {kWater, "request = transfer", "the transfer: the other reservoir is asked for it"}},
    {"pump", {kEither, "inflow = outflow"}},
};

}  // namespace

BalanceIdentity balanceOf(std::string_view type) {
    for (const Row& row : kRows) {
        if (row.type == type) return row.balance;
    }
    return {};
}

}  // namespace kesto::tables
