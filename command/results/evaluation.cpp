#include "evaluation.h"

namespace kesto {

Evaluation evaluate(const Results& results, const AccountNeeds& needs, SeriesValues& series,
                    const EvaluationOptions& options) {
    const RunMonths months(results.dayOf(0), options.kept ? results.steps : 0);
    const Recorded recorded(results, needs, series, &months);
    const Outlets outlets(recorded);
    const Multiplicity multiplicity(recorded, series);
    const ComponentSums sums(recorded, outlets, multiplicity);
    const WaterPaths paths(recorded, outlets, multiplicity, sums);
    Evaluation evaluation;
    evaluation.balance = balanceOf(recorded, outlets, multiplicity, sums, paths);
    evaluation.account = accountOf(recorded, sums, paths, evaluation.balance);
    const Money money(recorded, results, multiplicity, evaluation.account);
    evaluation.costs = money.network();
    evaluation.figures =
        figuresOf(recorded, sums, paths, evaluation.account, money, options.baseline, options.hasFiguresOfComponents);
    if (options.kept) {
        evaluation.overview = overviewOf(recorded, results, months, multiplicity, sums, paths, evaluation.account,
                                         evaluation.figures, *options.kept);
    }
    return evaluation;
}

}  // namespace kesto
