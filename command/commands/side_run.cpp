#include "side_run.h"

#include "engine_run.h"
#include "evaluation.h"
#include "record.h"

namespace kesto {

void runBeside(LoadedModel& loaded, bool isOverseen,
               const std::function<void(const Results&, const Evaluation&)>& look) {
    const Model& model = loaded.model();
    const AccountNeeds needs = needsOf(model, loaded.series(), {}, false);
    Record record(model, loaded.series(), needs.plan);
    const Results results = collectResults(model, record, record.shared(), needs.plan, runEngine(record));
    const std::vector<OutputPort> kept;
    look(results, evaluate(results, needs, loaded.series(), {.kept = isOverseen ? &kept : nullptr}));
}

}  // namespace kesto
