// Well, type 38 (GW): meets a demand up to its capacity and passes on what it cannot meet.
//
//   out         = max(0, Q - s1 A dt)
//   abstraction = min(dt (s1 A), Q), taken out of the infiltration potential of the key id
//
//   Q     input: demand                              [vol/step]
//   A     size: area
//   s1    capacity per unit of A                     [vol/d]
//   s3    energy per unit of volume                  [kWh/vol]
//   s12   capacity cost per unit of A and step       s13   operating cost per unit of A and year
//   dt    TimeStep [d]
//
// No multiplier scales a well.

#include <algorithm>

#include "components.h"
#include "components/lookup.h"

namespace {

float abstraction(float Q, float s1, float A, float dt) {
    return std::min(dt * (s1 * A), Q);
}

float unmet(float Q, float s1, float A, float dt) {
    return std::max(0.0F, Q - s1 * A * dt);
}

}  // namespace

void Gw_Pots(std::int32_t id, AUEglobals* Globals, Signal in1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 3, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s1, s3, s12, s13] = *specifications;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    const float A = row->size;
    const float dt = Globals->TimeStep;
    const float abstracted = abstraction(in1.quantity, s1, A, dt);
    if (!addPotential(Globals, Series::NrgPot, g, abstracted * s3)) return;
    if (!addPotential(Globals, Series::CapPot, g, s12 * A)) return;
    if (!addPotential(Globals, Series::OprPot, g, A * (s13 * dt / 365.0F))) return;
    addPotential(Globals, Series::InfPot, g, -abstracted);
}

void Gw_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1>(Globals, row);
    if (!specifications) return;
    const auto [s1] = *specifications;
    *out1 = {unmet(in1.quantity, s1, row->size, Globals->TimeStep), -1.0F};
}
