// Wind energy, type 61 (WN): a power curve without a cut-out.
//
//   x = 0.28 U / s56        P = s1 (103.6 x^2.764 - 3.96) / 100        energy = -max(P, 0) dt 24 N
//
//   U     wind of the key id at this step [km/h]; 0.28 turns it into m/s
//   N     size: number of units                s1    scale of the power curve [kW]
//   s56   divisor of the wind                  s12   capacity cost per unit and step
//   s13   operating cost per unit and year     dt    TimeStep [d]
//
// What is delivered counts negative. No multiplier scales a wind unit.

#include <cmath>

#include "components.h"
#include "components/lookup.h"

namespace {

float generation(float U, float s1, float s56) {
    const double x = static_cast<double>(U / s56) * 0.28;
    const double P = static_cast<double>(s1) * (103.6 * std::pow(x, 2.764) - 3.96) / 100.0;
    return P > 0.0 ? static_cast<float>(-P) : -0.0F;
}

}  // namespace

void Wn_Pots(std::int32_t id, AUEglobals* Globals) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const std::int32_t g = nint(row->key);
    const auto U = readNow(Globals, Series::Wind, g);
    if (!U) return;
    const auto specifications = readSpecifications<1, 12, 13, 56>(Globals, row);
    if (!specifications) return;
    const auto [s1, s12, s13, s56] = *specifications;
    if (g < 1) return;
    const float N = row->size;
    const float dt = Globals->TimeStep;
    if (!addPotential(Globals, Series::NrgPot, g, generation(*U, s1, s56) * dt * 24.0F * N)) return;
    if (!addPotential(Globals, Series::OprPot, g, s13 * dt / 365.0F * N)) return;
    addPotential(Globals, Series::CapPot, g, s12 * N);
}
