// Splitter, type 36 (SP): divides a flow by a percentage that follows the filling of stores on either side.
//
//   pct = P0 + sum over groups of W beta / C        fA = pct / 100, cut to 0 ... 1        fB = 1 - fA
//
//   P0     size: base percentage of output 1
//   beta   weight of a group; above 0 the group stands on the side of output 1, else on the side of output 2
//   W      what the members of a group hold: sum of their WatQuant at the end of the previous step
//   C      what they can hold: sum of specification 1 of their brands
//
// Then neither side is asked for more than its groups hold (Wp, Wn); what is too much goes to the other side. A side
// whose groups have no capacity (Cp, Cn) has no limit. Both outputs carry the quality of the input.

#include "components/splitter.h"

namespace {

constexpr std::size_t kMostGroups = 100;

// What the groups of both sides hold and can hold, and their correction of the percentage.
struct Sums {
    float corr = 0.0F;
    float Wp = 0.0F;
    float Cp = 0.0F;
    float Wn = 0.0F;
    float Cn = 0.0F;
};

SplitFlow shares(float pct, float q) {
    if (pct < 0.0F) return {0.0F * q, 1.0F * q};
    if (pct > 100.0F) return {1.0F * q, 0.0F * q};
    const float fA = pct / 100.0F;
    return {fA * q, (1.0F - fA) * q};
}

// The rules are written out so that a comparison with a NaN selects only what its own condition says.
SplitFlow adjust(SplitFlow flow, const Sums& s) {
    const auto [a, b] = flow;
    const float dA = a - s.Wp;
    const float dB = b - s.Wn;
    if (dA < 0.0F && dB < 0.0F) return flow;
    const bool firstToSecond = s.Wn > b + dA || s.Cn == 0.0F;
    const SplitFlow firstLimited{s.Wp, b + dA};
    if (dA >= 0.0F && dB < 0.0F) {
        return s.Cp != 0.0F && dA != 0.0F && firstToSecond ? firstLimited : flow;
    }
    if (dA >= 0.0F && dB >= 0.0F && dA != 0.0F && s.Cp != 0.0F && firstToSecond) return firstLimited;
    const bool secondAbove = dB >= 0.0F && (dA >= 0.0F || dA < 0.0F || dA == 0.0F || s.Cp == 0.0F);
    if (secondAbove && s.Cn != 0.0F && dB != 0.0F) {
        const float a2 = a + dB;
        if (s.Wp > a2 || s.Cp == 0.0F) return {a2, s.Wn};
    }
    return flow;
}

Splitting::Group readGroup(Binder& b, const SplitEntry& entry) {
    float C = 0.0F;
    std::vector<const float*> held;
    for (std::int32_t i = 0; i < entry.nMembers && !b.failed(); ++i) {
        const std::int32_t member = entry.members[i];
        held.push_back(b.before(Series::WatQuant, member));
        const auto [capacity] = b.specifications<1>(b.find(member));
        C += capacity;
    }
    return {entry.beta, C, held.size(), b.keep(held)};
}

struct Flows {
    Splitting splitting;

    explicit Flows(Binder& b) : splitting(b, b.id()) {}

    void run(const Block& block, const Ports& ports) const {
        for (std::int32_t j = 0; j < block.length; ++j) {
            const auto [Q, q] = ports.in1[j];
            const auto [first, second] = splitting.at(block, j, Q);
            ports.out1[j] = {first, q};
            ports.out2[j] = {second, q};
        }
    }
};

}  // namespace

Splitting::Splitting(Binder& b, std::int32_t id) {
    const ComponentRow* const row = b.find(id);
    if (!row) return;
    P0_ = row->size;
    std::vector<Group> groups;
    std::int32_t place = b.findSplit(id, 0);
    while (place >= 0 && groups.size() < kMostGroups && !b.failed()) {
        groups.push_back(readGroup(b, b.record()->Splits[place]));
        place = b.findSplit(id, place + 1);
    }
    nGroups_ = groups.size();
    groups_ = b.keep(groups);
}

SplitFlow Splitting::at(const Block& block, std::int32_t j, float quantity) const {
    Sums sums;
    for (std::size_t i = 0; i < nGroups_; ++i) {
        const auto& [beta, C, nMembers, held] = groups_[i];
        float W = 0.0F;
        for (std::size_t member = 0; member < nMembers; ++member)
            W += block.before(held[member])[j];
        sums.corr += W * beta / C;
        const bool isFirst = beta > 0.0F;
        (isFirst ? sums.Wp : sums.Wn) += W;
        (isFirst ? sums.Cp : sums.Cn) += C;
    }
    return adjust(shares(sums.corr + P0_, quantity), sums);
}

const Form Sp_Outs = kOutputs<Flows, Sets::Both>;
