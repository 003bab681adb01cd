#include "evaluation.h"

namespace kesto {

Evaluation evaluate(const Results& results, const AccountNeeds& needs, SeriesValues& series) {
    const Recorded recorded(results, needs, series);
    const Outlets outlets(recorded);
    const Multiplicity multiplicity(recorded, series);
    const ComponentSums sums(recorded, outlets, multiplicity);
    const WaterPaths paths(recorded, outlets, multiplicity, sums);
    Evaluation evaluation;
    evaluation.balance = balanceOf(recorded, outlets, multiplicity, sums, paths);
    evaluation.account = accountOf(recorded, sums, paths, evaluation.balance);
    evaluation.figures = figuresOf(recorded, sums, paths, evaluation.account);
    return evaluation;
}

}  // namespace kesto
