#include "load.h"

#include "checks.h"
#include "model_reader.h"

namespace kesto {

LoadedModel::LoadedModel(const std::string& path, const ReadOptions& options) {
    model_ = readModel(path, diagnostics_, options);
    if (!model_) return;
    series_ = std::make_unique<SeriesValues>(*model_, diagnostics_);
    checkModel(*model_, *series_, diagnostics_);
}

}  // namespace kesto
