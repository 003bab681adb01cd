#include "balance_terms.h"

#include <algorithm>

namespace kesto {

std::string_view toText(Term term) {
    static constexpr std::array<std::string_view, kTerms> kNames{
        "rain",   "drawn", "released", "taken_for_delivered", "created", "added", "evaporated", "infiltrated", "lost",
        "served", "used",  "ended"};
    return kNames[static_cast<std::size_t>(term)];
}

double BalanceStep::of(Amounts amount) const {
    switch (amount) {
        case Amounts::in1:
            return in[0];
        case Amounts::in2:
            return in[1];
        case Amounts::out1:
            return out[0];
        case Amounts::out2:
            return out[1];
        case Amounts::rain:
            return rain * size;
        case Amounts::none:
            break;
    }
    return 0;
}

double BalanceTerm::at(const BalanceStep& step) const {
    if (litres) return litres(step);
    return (step.of(reads) - step.of(less)) * (share > 0 ? step.parameter(share) : 1);
}

std::string_view BalanceIdentity::meaningOf(Term term) const {
    const auto found =
        std::find_if(terms.begin(), terms.end(), [&](const BalanceTerm& one) { return one.term == term; });
    return found == terms.end() ? std::string_view() : found->meaning;
}

}  // namespace kesto
