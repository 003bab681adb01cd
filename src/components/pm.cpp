// Pump, type 55 (PM): energy and cost of a flow, which passes unchanged.
//
//   energy = N (s3 Q)
//
//   Q     quantity of the input                        N     size
//   s3    energy per unit of flow [kWh/vol]            s12   capacity cost per step
//   s13   operating cost per year
//
// No multiplier scales a pump.

#include "components.h"
#include "components/lookup.h"

void Pm_Pots(std::int32_t id, AUEglobals* Globals, Signal* in1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<3, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s3, s12, s13] = *specifications;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    // DELIBERATE: the size scales the energy alone, not the costs.
    if (!addPotential(Globals, Series::CapPot, g, s12)) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * Globals->TimeStep / 365.0F)) return;
    addPotential(Globals, Series::NrgPot, g, row->size * (s3 * in1->quantity));
}
