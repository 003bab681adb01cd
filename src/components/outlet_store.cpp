// Outlet store, type 50 (DT): a basin that empties through an outlet.
//
//   F  = min(H, k H^1.5 dt 1440)        out = (F A, q)        H' = max((Q - F A) / A + H, 0)
//
//   Q, q    input                                                     [vol/step], quality
//   H, H'   WatQuant of the own id, end of step k-1 and k: level
//   k       specification 1: outlet coefficient                       [per minute]
//   A       size: area                                                dt   TimeStep [d]

#include <algorithm>
#include <cmath>

#include "components.h"
#include "components/lookup.h"

namespace {

constexpr double kMinutesPerDay = 1440.0;

float outflowDepth(float H, float k, float dt) {
    const auto level = static_cast<double>(H);
    const double free = static_cast<double>(k) * std::pow(level, 1.5) * static_cast<double>(dt) * kMinutesPerDay;
    return static_cast<float>(std::min(level, free));
}

float levelAfter(float Q, float F, float A, float H) {
    return std::max((Q - F * A) / A + H, 0.0F);
}

}  // namespace

void Dt_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto H = readBefore(Globals, Series::WatQuant, id);
    if (!H) return;
    const auto specifications = readSpecifications<1>(Globals, row);
    if (!specifications) return;
    const float A = row->size;
    const float F = outflowDepth(*H, specifications->front(), Globals->TimeStep);
    if (!store(Globals, Series::WatQuant, id, levelAfter(in1.quantity, F, A, *H))) return;
    *out1 = {F * A, in1.quality};
}
