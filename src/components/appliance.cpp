// Appliances, types 1, 2 and 4 ... 10 (OU).
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

#include "components/model.h"
#include "components/type_codes.h"
#include "errors.h"

namespace {

constexpr std::int32_t kKinds = 11;  // frequencies of a group per step

float usesPerStep(float n, float f, float dt, float d) {
    return n * f * dt * d;
}

float volumePerStep(float n, float f, float s1, float dt, float d) {
    return n * (f * s1) * dt * d;
}

bool runsAlone(std::int32_t kind) {
    return kind == code::kOutdoorUse || kind == code::kIndependentUse;
}

// How often an appliance runs.
struct Uses {
    std::int32_t kind;
    const float *frequencies, *occupancy, *fluctuation;  // occupancy: null for kinds that run alone
    float dt;

    float n(std::int32_t k) const { return occupancy ? occupancy[k] : 1.0F; }
    float f(std::int32_t k) const { return frequencies[static_cast<std::ptrdiff_t>(kKinds) * k + kind - 1]; }
    float perStep(std::int32_t k) const { return usesPerStep(n(k), f(k), dt, fluctuation[k]); }
    float volume(std::int32_t k, float s1) const { return volumePerStep(n(k), f(k), s1, dt, fluctuation[k]); }
};

// All but the fluctuation, which is looked up later.
Uses readUses(Binder& b) {
    Uses uses{};
    uses.kind = b.type();
    uses.frequencies = b.frequencies(b.key(), uses.kind, kKinds);
    // The series is required of kinds that run alone as well.
    const float* const required = b.ofKey(Series::Occup);
    uses.occupancy = runsAlone(uses.kind) ? nullptr : required;
    uses.dt = b.timeStep();
    return uses;
}

struct Potentials {
    float s1, s3, s12, s13;
    Uses uses;
    const float* m;
    float *InfPot, *NrgPot, *OprPot, *CapPot;

    explicit Potentials(Binder& b) {
        std::tie(s1, s3, s12, s13) = b.specifications<1, 3, 12, 13>();
        uses = readUses(b);
        m = b.multiplier();
        uses.fluctuation = b.ofKey(Series::Dmdflct);
        InfPot = uses.kind == code::kOutdoorUse ? b.potential(Series::InfPot) : nullptr;
        NrgPot = b.potential(Series::NrgPot);
        OprPot = b.potential(Series::OprPot);
        CapPot = b.potential(Series::CapPot);
    }

    void run(const Block& block, const Ports&) const {
        const auto perStep = [&](std::int32_t j) { return uses.perStep(block.begin + j); };
        block.book(InfPot, m, [&](float factor, std::int32_t j) { return factor * perStep(j) * s1; });
        block.book(NrgPot, m, [&](float factor, std::int32_t j) { return s3 * factor * perStep(j); });
        block.book(OprPot, m, [&](float factor, std::int32_t j) { return perStep(j) * (s13 * factor); });
        block.book(CapPot, m, [&](float factor) { return factor * s12; });
    }
};

struct Flows {
    float s1, s25;
    Uses uses;

    explicit Flows(Binder& b) {
        std::tie(s1, s25) = b.specifications<1, 25>();
        uses = readUses(b);
        uses.fluctuation = b.ofKey(Series::Dmdflct);
    }

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float volume = uses.volume(block.begin + j, s1);
            ports.out1[j] = {uses.kind == code::kOutdoorUse ? 0.0F : volume, s25};
            ports.out2[j] = {volume, -1.0F};
        }
    }
};

}  // namespace

const Form App_Pots = kPotentials<Potentials>;
const Form App_Outs = kOutputs<Flows, Sets::Both>;
