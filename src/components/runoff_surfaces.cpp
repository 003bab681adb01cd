// Runoff surfaces: impervious, type 28 (IM), and pervious, type 29 (PV).
//
// Impervious: a fixed fraction of the rain is lost, the rest runs off at once.
//
//   runoff = (1 - s27) (R A)        evaporation = R (s27 A)
//
// Pervious: a bucket that holds rain up to a depth, dries by a share of what it held, and runs off what overflows.
//
//   depth  = max(R + W - W (s27 + s28) dt, 0)        runoff = max(depth - s1, 0) A
//   W'     = min(depth, s1)
//   infiltration = s28 W A dt       evaporation = s27 W A dt
//
//   R      rainfall of the key id at this step                                  [mm]
//   A      size: area                                                           [m2]
//   W, W'  WatQuant of the surface's own id, end of step k-1 and k              [mm]
//   s1     capacity of the bucket                                               [mm]
//   s25    quality of the runoff
//   s27    impervious: fraction of the rain lost; pervious: evaporation rate    [1/d]
//   s28    infiltration rate                                                    [1/d]
//   dt     TimeStep                                                             [d]
//   m      multiplier of the potentials
//
// The potentials of the pervious surface are taken from W as it stood, whether or not the bucket can supply that much.

#include <algorithm>

#include "components.h"
#include "components/lookup.h"

namespace {

float runoffImpervious(float R, float s27, float A) {
    return (1.0F - s27) * (R * A);
}

struct Bucket {
    float depth;
    float runoff;  // depth
};

Bucket bucket(float R, float W, float s1, float s27, float s28, float dt) {
    const float total = R + W;
    const float losses = W * (s27 + s28) * dt;
    float depth = total - losses;
    if (depth < 0.0F) depth = 0.0F;
    return {std::min(depth, s1), depth > s1 ? depth - s1 : 0.0F};
}

}  // namespace

void Im_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<27>(Globals, row);
    if (!specifications) return;
    const auto [s27] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const std::int32_t g = nint(row->key);
    const auto R = readNow(Globals, Series::Rainfall, g);
    if (!R || g < 1) return;
    addPotential(Globals, Series::EvaPot, g, *m * (*R * (s27 * row->size)));
}

void Im_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<25, 27>(Globals, row);
    if (!specifications) return;
    const auto [s25, s27] = *specifications;
    const auto R = readNow(Globals, Series::Rainfall, nint(row->key));
    if (!R) return;
    *out1 = {runoffImpervious(*R, s27, row->size), s25};
}

void Pv_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<27, 28>(Globals, row);
    if (!specifications) return;
    const auto [s27, s28] = *specifications;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const auto W = readBefore(Globals, Series::WatQuant, id);
    if (!W) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    const float A = row->size;
    if (!addPotential(Globals, Series::InfPot, g, s28 * *m * *W * A * Globals->TimeStep)) return;
    addPotential(Globals, Series::EvaPot, g, A * (*m * s27 * *W) * Globals->TimeStep);
}

void Pv_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 25, 27, 28>(Globals, row);
    if (!specifications) return;
    const auto [s1, s25, s27, s28] = *specifications;
    const auto W = readBefore(Globals, Series::WatQuant, id);
    if (!W) return;
    const auto R = readNow(Globals, Series::Rainfall, nint(row->key));
    if (!R) return;
    const auto [depth, runoff] = bucket(*R, *W, s1, s27, s28, Globals->TimeStep);
    if (!store(Globals, Series::WatQuant, id, depth)) return;
    *out1 = {runoff * row->size, s25};
}
