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

#include "components.h"
#include "components/lookup.h"

namespace {

constexpr int kMostGroups = 100;

// What the groups of both sides hold and can hold, and their correction of the percentage.
struct Groups {
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
SplitFlow adjust(SplitFlow flow, const Groups& s) {
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

// Adds what one group holds and can hold. False when a member lacks something.
bool addGroup(AUEglobals* Globals, const SplitEntry& group, Groups& sums) {
    float W = 0.0F;
    float C = 0.0F;
    for (std::int32_t i = 0; i < group.nMembers; ++i) {
        const std::int32_t member = group.members[i];
        const auto held = readBefore(Globals, Series::WatQuant, member);
        if (!held) return false;
        const ComponentRow* const row = findRow(Globals, member);
        if (!row) return false;
        const auto specifications = readSpecifications<1>(Globals, row);
        if (!specifications) return false;
        W += *held;
        C += specifications->front();
    }
    sums.corr += W * group.beta / C;
    const bool isFirst = group.beta > 0.0F;
    (isFirst ? sums.Wp : sums.Wn) += W;
    (isFirst ? sums.Cp : sums.Cn) += C;
    return true;
}

std::optional<Groups> readGroups(AUEglobals* Globals, std::int32_t id) {
    Groups sums;
    std::int32_t group = findSplit(Globals, id, 0);
    for (int groups = 0; group >= 0 && groups < kMostGroups; ++groups) {
        if (!addGroup(Globals, Globals->Splits[group], sums)) return std::nullopt;
        group = findSplit(Globals, id, group + 1);
    }
    return sums;
}

}  // namespace

std::optional<SplitFlow> splitFlow(std::int32_t id, AUEglobals* Globals, float quantity) {
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return std::nullopt;
    const auto groups = readGroups(Globals, id);
    if (!groups) return std::nullopt;
    return adjust(shares(groups->corr + row->size, quantity), *groups);
}

void Sp_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2) {
    const auto flow = splitFlow(id, Globals, in1.quantity);
    if (!flow) return;
    *out1 = {flow->first, in1.quality};
    *out2 = {flow->second, in1.quality};
}
