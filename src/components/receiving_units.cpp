// Receiving units: service reservoir, type 33 (RS), and treatment plant, type 37 (TP). Each serves a demand, asks for
// water upstream, and traces the quality of what it receives to its sources.
//
//   Sigma = sum over paths of f w            f = product of the shares of the splitters on the path
//
//   w     WatQual of the path's leaf at the end of the previous step
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
//   V       size: capacity (RS), scale of the capacity (TP)
//   s1      capacity per unit of V [vol/d]         s2    loss fraction
//   s3      energy per unit of volume [kWh/vol]    s12   capacity cost per unit of V and step
//   s13     operating cost per unit of V and year  s52   refill rate, fraction of V [1/d]
//   p       share of the pollutants that stays after treatment
//   dt      TimeStep [d]                           m     multiplier of the potentials (RS alone)
//
// Outputs carry no quality. When sources are not traced, the qualities are left as the host gave them.

#include <algorithm>
#include <compare>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "components/model.h"
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

// The qualities of a receiving unit's sources, weighted by the shares of their paths. Paths part at splitters, so they
// have splitters and the beginnings of their products in common: each is computed once a step.
class Sources {
  public:
    explicit Sources(Binder& b) {
        const Receiver* const receiver = b.receiver();
        if (!receiver) {
            fail(b.record(), text::kNoPaths, b.id());
            b.giveUp();
            return;
        }
        Tree tree(b);
        std::vector<Path> paths;
        for (std::size_t i = 0; !b.failed() && i < receiver->paths.size(); ++i) {
            const auto& [leaf, splitters] = receiver->paths[i];
            const std::size_t branch = tree.add(splitters);
            // A leaf with id 0 is none, and adds nothing.
            if (leaf != 0) paths.push_back({branch, b.before(Series::WatQual, leaf)});
        }
        splitters_ = {b.keep(tree.splitters), tree.splitters.size()};
        branches_ = {b.keep(tree.branches), tree.branches.size()};
        paths_ = {b.keep(paths), paths.size()};
        flows_ = b.array<SplitFlow>(splitters_.size());
        factors_ = b.array<float>(branches_.size() + 1);
        factors_[0] = 1.0F;
    }

    float at(const Block& block, std::int32_t j) const {
        for (std::size_t i = 0; i < splitters_.size(); ++i)
            flows_[i] = splitters_[i].at(block, j, 1.0F);
        for (std::size_t i = 0; i < branches_.size(); ++i) {
            const auto& [from, splitter, isFirst] = branches_[i];
            factors_[i + 1] = factors_[from] * (isFirst ? flows_[splitter].first : flows_[splitter].second);
        }
        float sigma = 0.0F;
        for (const auto& [branch, w] : paths_)
            sigma += factors_[branch] * block.before(w)[j];
        return sigma;
    }

  private:
    // An output of a splitter on a path, and the branch before it: 0 is the start, i + 1 the i-th of all.
    struct Branch {
        std::size_t from;
        std::size_t splitter;
        bool isFirst;
        auto operator<=>(const Branch&) const = default;
    };
    struct Path {
        std::size_t branch;
        const float* w;
    };

    // All paths from the start.
    struct Tree {
        Binder& b;
        std::vector<Splitting> splitters;
        std::vector<Branch> branches;
        std::map<std::int32_t, std::size_t> places;  // of the splitters, by id
        std::map<Branch, std::size_t> numbers;

        explicit Tree(Binder& binder) : b(binder) {}

        // The last branch of a path.
        std::size_t add(const std::vector<SplitterOnPath>& path) {
            std::size_t last = 0;
            for (const auto& [Split_id, Split_port] : path) {
                const auto [place, isNew] = places.try_emplace(Split_id, splitters.size());
                if (isNew) splitters.emplace_back(b, Split_id);
                const Branch branch{last, place->second, Split_port == 1};
                const auto [number, isFresh] = numbers.try_emplace(branch, branches.size() + 1);
                if (isFresh) branches.push_back(branch);
                last = number->second;
            }
            return last;
        }
    };

    std::span<const Splitting> splitters_;
    std::span<const Branch> branches_;
    std::span<const Path> paths_;
    SplitFlow* flows_ = nullptr;  // of each splitter in a step
    float* factors_ = nullptr;    // the product up to the start and to each branch
};

// RS
struct ReservoirPotentials {
    float V, s12;
    const float* m;
    float* CapPot;

    explicit ReservoirPotentials(Binder& b) : V(b.size()) {
        std::tie(s12) = b.specifications<12>();
        m = b.multiplier();
        CapPot = b.potential(Series::CapPot);
    }

    void run(const Block& block, const Ports&) const {
        block.book(CapPot, m, [&](float factor) { return factor * s12 * V; });
    }
};

// RS: the water
struct Refill {
    float V, s52, dt;
    const float* S;
    float* S1;
    BlockArray heldBefore;

    explicit Refill(Binder& b) : V(b.size()), dt(b.timeStep()) {
        std::tie(s52) = b.specifications<52>();
        S = b.before(Series::WatQuant);
        S1 = b.after(Series::WatQuant);
        heldBefore = b.handedOver();
    }

    void run(const Block& block, const Ports& ports) const {
        float held = *block.before(S);
        float* const levels = block.now(S1);
        float* const before = block.part(heldBefore);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float D = ports.in1[j].quantity;
            const float R = refill(held, D, V, s52, dt);
            before[j] = held;
            levels[j] = held = levelAfter(held, R, D);
            ports.out1[j] = {R, -1.0F};
        }
    }
};

// RS: its quality
struct Mixing {
    float V, s52, dt;
    std::optional<Sources> sources;  // none when sources are not traced
    const float* C;
    float* C1;
    BlockArray heldBefore;

    explicit Mixing(Binder& b) : V(b.size()), dt(b.timeStep()) {
        if (!b.tracesSources()) return;
        std::tie(s52) = b.specifications<52>();
        heldBefore = b.handedOver();
        sources.emplace(b);
        C = b.before(Series::WatQual);
        C1 = b.after(Series::WatQual);
    }

    void run(const Block& block, const Ports& ports) const {
        if (!sources) return;
        float quality = *block.before(C);
        float* const qualities = block.now(C1);
        const float* const before = block.part(heldBefore);
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float D = ports.in1[j].quantity;
            const float S = before[j];
            const float R = refill(S, D, V, s52, dt);
            quality = mixedQuality(S, quality, R, sources->at(block, j), levelAfter(S, R, D));
            qualities[j] = quality;
        }
    }
};

// TP
struct PlantPotentials {
    float V, s1, s2, s3, s12, s13, dt;
    float *NrgPot, *LosPot, *CapPot, *OprPot;

    explicit PlantPotentials(Binder& b) : V(b.size()), dt(b.timeStep()) {
        std::tie(s1, s2, s3, s12, s13) = b.specifications<1, 2, 3, 12, 13>();
        NrgPot = b.potential(Series::NrgPot);
        LosPot = b.potential(Series::LosPot);
        CapPot = b.potential(Series::CapPot);
        OprPot = b.potential(Series::OprPot);
    }

    void run(const Block& block, const Ports& ports) const {
        block.book(NrgPot, [&](std::int32_t j) { return std::min(s1 * V * dt, ports.in1[j].quantity) * s3; });
        block.book(LosPot, [&](std::int32_t j) { return ports.in1[j].quantity * s2; });
        block.bookConstant(CapPot, s12 * V);
        block.bookConstant(OprPot, dt * (V * s13) / 365.0F);
    }
};

// TP: the water
struct Plant {
    float V, s1, s2, dt;

    explicit Plant(Binder& b) : V(b.size()), dt(b.timeStep()) { std::tie(s1, s2) = b.specifications<1, 2>(); }

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j) {
            const float D = ports.in1[j].quantity;
            ports.out1[j] = {(1.0F + s2) * D, -1.0F};
            ports.out2[j] = {unserved(D, s1 * V * dt), -1.0F};
        }
    }
};

// TP: its quality
struct Averaging {
    std::optional<Sources> sources;
    const float* C;
    float* C1;

    explicit Averaging(Binder& b) {
        if (!b.tracesSources()) return;
        sources.emplace(b);
        C = b.before(Series::WatQual);
        C1 = b.after(Series::WatQual);
    }

    void run(const Block& block, const Ports&) const {
        if (!sources) return;
        float quality = *block.before(C);
        float* const qualities = block.now(C1);
        for (std::int32_t j = 0; j < block.length; ++j)
            qualities[j] = quality = averagedQuality(quality, sources->at(block, j));
    }
};

}  // namespace

const Form Rs_Pots = kPotentials<ReservoirPotentials>;
const Form Rs_Outs = kOutputs<Refill, Sets::Out1>;
const Form Rs_Mixing = kTracing<Mixing>;
const Form Tp_Pots = kPotentials<PlantPotentials>;
const Form Tp_Outs = kOutputs<Plant, Sets::Both>;
const Form Tp_Mixing = kTracing<Averaging>;
