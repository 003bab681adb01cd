#include "load.h"

#include "checks.h"
#include "going_on.h"
#include "model_reader.h"

namespace kesto {

LoadedModel::LoadedModel(const std::string& path, const ReadOptions& options) {
    model_ = readModel(path, diagnostics_, options);
    if (!model_) return;
    if (!options.statesFrom.empty()) takeStates(*model_, options.statesFrom, diagnostics_);
    series_ = std::make_unique<SeriesValues>(*model_, diagnostics_);
    checkModel(*model_, *series_, diagnostics_);
    if (model_->simulation.goesOn && isFit()) checkDayBefore(*model_, *series_);
}

}  // namespace kesto
