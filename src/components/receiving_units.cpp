// Receiving units: refilled store, type 33 (RS), and throughput, type 37 (TP). Each works from a demand, asks for water
// upstream, and traces the quality of what it receives to its sources.
//
//   Sigma = sum over ways of f w             f = product of the shares of the splitters on the way
//
//   w     WatQual of the way's leaf at the end of the previous step
//
// RS   R  = min(s52 V dt, max(V - S + D, 0))         S' = max(S + R - D, 0)
//      C' = (S C + R Sigma) / (S + R) while S' >= 0.1, else 0
//      out = R
// TP   C' = (C + p Sigma) / 2
//      out1 = (1 + s2) D                             out2 = max(D - s1 V dt, 0)
//
//   D       input: demand                                                            [vol/step]
//   S, S'   RS: WatQuant of the own id, end of step k-1 and k                        [vol]
//   C, C'   WatQual of the own id, likewise
//   V       size: volume of the store (RS), scale of the capacity (TP)
//   s1      capacity per unit of V [vol/d]         s2    loss fraction
//   s3      energy per unit of volume [kWh/vol]    s12   capacity cost per unit of V and step
//   s13     operating cost per unit of V and year  s52   refill rate, fraction of V [1/d]
//   p       share of the pollutants that stays after treatment
//   dt      TimeStep [d]                           m     multiplier of the potentials (RS alone)
//
// Outputs carry no quality. When sources are not traced, the qualities are left as the host gave them.

#include <algorithm>

#include "components.h"
#include "components/lookup.h"
#include "components/splitter.h"
#include "errors.h"

namespace {

// DELIBERATE: not 0.01.
constexpr float kPollutantFactor = 0.00999999F;

float refill(float S, float D, float V, float s52, float dt) {
    return std::min(s52 * V * dt, std::max(V - S + D, 0.0F));
}

float levelAfter(float S, float R, float D) {
    return std::max(S + R - D, 0.0F);
}

// DELIBERATE: the divisor is the level before the draw.
float mixedQuality(float S, float C, float R, float sigma, float level) {
    return static_cast<double>(level) >= 0.1 ? (S * C + R * sigma) / (S + R) : 0.0F;
}

float averagedQuality(float C, float sigma) {
    return (kPollutantFactor * sigma + C) * 0.5F;
}

float unserved(float D, float capacity) {
    const float spare = capacity - D;
    return spare > 0.0F ? -0.0F : -spare;
}

// Contribution of one way.
std::optional<float> readPath(AUEglobals* Globals, const RCVTOLEAF& path) {
    if (path.leaf_id == 0) return 0.0F;
    float f = 1.0F;
    for (const SplitterOnPath& splitter : path.splitters) {
        const auto flow = splitFlow(splitter.Split_id, Globals, 1.0F);
        if (!flow) return std::nullopt;
        f *= splitter.Split_port == 1 ? flow->first : flow->second;
    }
    const auto w = readBefore(Globals, Series::WatQual, path.leaf_id);
    if (!w) return std::nullopt;
    return f * *w;
}

std::optional<float> readSourceQuality(AUEglobals* Globals, const RCVTOLEAFS& Receivers, std::int32_t id) {
    const auto receiver =
        std::find_if(Receivers.begin(), Receivers.end(), [&](const Receiver& entry) { return entry.id == id; });
    if (receiver == Receivers.end()) {
        fail(Globals, text::kNoPaths, id);
        return std::nullopt;
    }
    float sigma = 0.0F;
    for (const RCVTOLEAF& path : receiver->paths) {
        const auto share = readPath(Globals, path);
        if (!share) return std::nullopt;
        sigma += *share;
    }
    return sigma;
}

}  // namespace

void Rs_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<12>(Globals, row);
    if (!specifications) return;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    addPotential(Globals, Series::CapPot, g, *m * specifications->front() * row->size);
}

void Rs_Outs(std::int32_t id, AUEglobals* Globals, const RCVTOLEAFS* Receivers, float demand, Signal* out1) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<52>(Globals, row);
    if (!specifications) return;
    const auto S = readBefore(Globals, Series::WatQuant, id);
    if (!S) return;
    const float R = refill(*S, demand, row->size, specifications->front(), Globals->TimeStep);
    const float level = levelAfter(*S, R, demand);
    if (!store(Globals, Series::WatQuant, id, level)) return;
    if (Receivers) {
        const auto sigma = readSourceQuality(Globals, *Receivers, id);
        if (!sigma) return;
        const auto C = readBefore(Globals, Series::WatQual, id);
        if (!C) return;
        if (!store(Globals, Series::WatQual, id, mixedQuality(*S, *C, R, *sigma, level))) return;
    }
    *out1 = {R, -1.0F};
}

void Tp_Pots(std::int32_t id, AUEglobals* Globals, float demand) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 2, 3, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s1, s2, s3, s12, s13] = *specifications;
    const std::int32_t g = nint(row->key);
    if (g < 1) return;
    const float V = row->size;
    const float dt = Globals->TimeStep;
    if (!addPotential(Globals, Series::NrgPot, g, std::min(s1 * V * dt, demand) * s3)) return;
    if (!addPotential(Globals, Series::LosPot, g, demand * s2)) return;
    if (!addPotential(Globals, Series::CapPot, g, s12 * V)) return;
    addPotential(Globals, Series::OprPot, g, dt * (V * s13) / 365.0F);
}

void Tp_Outs(std::int32_t id, AUEglobals* Globals, const RCVTOLEAFS* Receivers, float demand, Signal* out1,
             Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const auto specifications = readSpecifications<1, 2>(Globals, row);
    if (!specifications) return;
    const auto [s1, s2] = *specifications;
    if (Receivers) {
        const auto sigma = readSourceQuality(Globals, *Receivers, id);
        if (!sigma) return;
        const auto C = readBefore(Globals, Series::WatQual, id);
        if (!C) return;
        if (!store(Globals, Series::WatQual, id, averagedQuality(*C, *sigma))) return;
    }
    *out1 = {(1.0F + s2) * demand, -1.0F};
    *out2 = {unserved(demand, s1 * row->size * Globals->TimeStep), -1.0F};
}
