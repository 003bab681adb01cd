// Water-using appliances, types 1, 2 and 4 ... 10 (OU).
//
//   uses   = n f dt d                 volume = n (f s1) dt d
//
//   n      occupancy of the group at this step; 1 for kinds 9 and 10, which run whoever is at home
//   f      frequency of this kind in the group [uses/d]
//   dt     TimeStep [d]
//   d      fluctuation of the group's demand
//   s1     volume per use [vol]         s3    energy per use [kWh]
//   s12    capacity cost per step       s13   operating cost per use
//   s25    quality of the released water
//   m      multiplier
//
// All series and potentials are those of the group g, the key id. Kind 9 waters the ground: what it draws infiltrates.

#include "components.h"
#include "components/lookup.h"
#include "errors.h"

namespace {

constexpr std::int32_t kKinds = 11;  // frequencies of a group per step
constexpr std::int32_t kOutdoor = 9;
constexpr std::int32_t kIndependent = 10;

float usesPerStep(float n, float f, float dt, float d) {
    return n * f * dt * d;
}

float volumePerStep(float n, float f, float s1, float dt, float d) {
    return n * (f * s1) * dt * d;
}

std::optional<float> readFrequency(AUEglobals* Globals, std::int32_t g, std::int32_t kind) {
    const float* const frequencies = findFrequencies(Globals, g);
    if (!frequencies) return std::nullopt;
    if (kind < 1 || kind > kKinds) {
        fail(Globals, text::kApplianceKind);
        return std::nullopt;
    }
    if (!checkStep(Globals, Globals->CurStep, g)) return std::nullopt;
    return frequencies[static_cast<std::ptrdiff_t>(kKinds) * Globals->CurStep + kind - 1];
}

// The series is required of kinds 9 and 10 as well.
std::optional<float> readOccupancy(AUEglobals* Globals, std::int32_t g, std::int32_t kind) {
    const auto n = readNow(Globals, Series::Occup, g);
    return n && (kind == kOutdoor || kind == kIndependent) ? 1.0F : n;
}

}  // namespace

void App_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const std::int32_t kind = nint(row->techid);
    const std::int32_t g = nint(row->key);
    const auto specifications = readSpecifications<1, 3, 12, 13>(Globals, row);
    if (!specifications) return;
    const auto [s1, s3, s12, s13] = *specifications;
    const auto f = readFrequency(Globals, g, kind);
    if (!f) return;
    const auto n = readOccupancy(Globals, g, kind);
    if (!n) return;
    const auto m = readMultiplier(Globals, Mult, id);
    if (!m) return;
    const auto d = readNow(Globals, Series::Dmdflct, g);
    if (!d) return;
    const float uses = usesPerStep(*n, *f, Globals->TimeStep, *d);
    if (g < 1) return;
    if (kind == kOutdoor && !addPotential(Globals, Series::InfPot, g, *m * uses * s1)) return;
    if (!addPotential(Globals, Series::NrgPot, g, s3 * *m * uses)) return;
    if (!addPotential(Globals, Series::OprPot, g, uses * (s13 * *m))) return;
    addPotential(Globals, Series::CapPot, g, *m * s12);
}

void App_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1, Signal* out2) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const std::int32_t kind = nint(row->techid);
    const std::int32_t g = nint(row->key);
    const auto specifications = readSpecifications<1, 25>(Globals, row);
    if (!specifications) return;
    const auto [s1, s25] = *specifications;
    const auto f = readFrequency(Globals, g, kind);
    if (!f) return;
    const auto n = readOccupancy(Globals, g, kind);
    if (!n) return;
    const auto d = readNow(Globals, Series::Dmdflct, g);
    if (!d) return;
    const float volume = volumePerStep(*n, *f, s1, Globals->TimeStep, *d);
    *out2 = {volume, -1.0F};
    *out1 = {kind == kOutdoor ? 0.0F : volume, s25};
}
