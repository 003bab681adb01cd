#include "side_run.h"

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

std::optional<NetworkCosts> costsOfBaseline(const std::string& model, ReadOptions read, const std::string& scenario,
                                            std::string& why) {
    read.baseline = scenario;
    LoadedModel loaded(model, read);
    if (!loaded.isFit()) {
        why = loaded.diagnostics().firstError()->text;
        return std::nullopt;
    }
    NetworkCosts costs;
    runBeside(loaded, false, [&](const Results& results, const Evaluation& evaluation) {
        why = failureOf(results);
        costs = evaluation.costs;
    });
    return why.empty() ? std::optional(costs) : std::nullopt;
}

}  // namespace kesto
