#include "side_run.h"

#include <stdexcept>

#include "engine_run.h"
#include "evaluation.h"
#include "record.h"
#include "summary.h"

namespace kesto {

void runBeside(LoadedModel& loaded, bool isOverseen,
               const std::function<void(const Results&, const Evaluation&)>& look) {
    const Model& model = loaded.model();
    const std::vector<OutputPort> kept = isOverseen ? allOutputs(model) : std::vector<OutputPort>();
    const AccountNeeds needs = needsOf(model, loaded.series(), kept, false);
    Record record(model, loaded.series(), needs.plan);
    const Results results = collectResults(model, record, record.shared(), needs.plan, runEngine(record));
    look(results, evaluate(results, needs, loaded.series(), {.kept = isOverseen ? &kept : nullptr}));
}

NetworkCosts costsOfBaseline(LoadedModel& baseline) {
    NetworkCosts costs;
    runBeside(baseline, false, [&](const Results& results, const Evaluation& evaluation) {
        if (const std::string why = failureOf(results); !why.empty()) throw std::runtime_error(why);
        costs = evaluation.costs;
    });
    return costs;
}

}  // namespace kesto
