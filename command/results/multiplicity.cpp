#include "multiplicity.h"

#include <algorithm>
#include <cmath>

namespace kesto {

namespace {

constexpr int kOne = 0;      // index of the factor 1
constexpr int kNobody = -1;  // no multiplier downstream
constexpr int kUnseen = -2;

Factor product(const Factor& downstream, const Floats& values) {
    Factor result;
    const bool isConstant = downstream.series.empty() &&
                            std::all_of(values.begin(), values.end(), [&](float value) { return value == values[0]; });
    if (isConstant) {
        result.constant = downstream.constant * static_cast<double>(values[0]);
        result.greatest = std::abs(result.constant);
        return result;
    }
    result.greatest = 0;
    for (std::size_t step = 0; step < values.size(); ++step) {
        result.series.push_back(downstream.at(step) * static_cast<double>(values[step]));
        result.greatest = std::max(result.greatest, std::abs(result.series.back()));
    }
    return result;
}

}  // namespace

Multiplicity::Multiplicity(const NetworkView& network, SeriesValues& series)
    : network_(network), series_(series), factors_(1) {
    const int components = network.components();
    std::vector<int> first(static_cast<std::size_t>(components), kUnseen);
    for (int i = 0; i < components; ++i) {
        firstDownstream(i, first);
    }
    std::vector<int> known(static_cast<std::size_t>(components), kUnseen);
    for (int i = 0; i < components; ++i) {
        const int multiplier = first[at(i)];
        of_.push_back(multiplier == kNobody ? kOne : factorOfMultiplier(multiplier, first, known));
    }
    for (int i = 0; i < components; ++i) {
        const bool scales = network.component(i).code == code::kMultiplier;
        into_.push_back(scales ? factorOfMultiplier(i, first, known) : of_[at(i)]);
    }
}

// The first multiplier downstream, of all on the path that leads to it.
int Multiplicity::firstDownstream(int component, std::vector<int>& known) const {
    std::vector<int> path;
    int found = kNobody;
    for (int i = component;;) {
        if (known[at(i)] != kUnseen) {
            found = known[at(i)];
            break;
        }
        path.push_back(i);
        known[at(i)] = kNobody;  // what stands when the path comes round to here without a multiplier
        const std::vector<int>& outgoing = network_.network().outgoing(i);
        if (outgoing.empty()) break;
        i = network_.connection(outgoing.front()).to;
        if (network_.component(i).code == code::kMultiplier) {
            found = i;
            break;
        }
    }
    for (const int i : path) {
        known[at(i)] = found;
    }
    return found;
}

// The multiplier's own series times what lies downstream of it. On a loop each multiplier counts once.
int Multiplicity::factorOfMultiplier(int multiplier, const std::vector<int>& first, std::vector<int>& known) {
    std::vector<int> chain;
    int factor = kOne;
    for (int i = multiplier; i != kNobody; i = first[at(i)]) {
        if (known[at(i)] != kUnseen) {
            factor = known[at(i)];
            break;
        }
        chain.push_back(i);
        known[at(i)] = kOne;
    }
    for (auto i = chain.rbegin(); i != chain.rend(); ++i) {
        const SourceIndex source = network_.component(*i).series[SeriesKind::multiplier];
        if (source >= 0) factor = indexOf(product(factors_[at(factor)], *series_.of(source)));
        known[at(*i)] = factor;
    }
    return factor;
}

int Multiplicity::indexOf(Factor factor) {
    const auto found = std::find(factors_.begin(), factors_.end(), factor);
    if (found != factors_.end()) return static_cast<int>(found - factors_.begin());
    factors_.push_back(std::move(factor));
    return static_cast<int>(factors_.size()) - 1;
}

}  // namespace kesto
