// Reads and checks a model: what every command starts with.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "diagnostics.h"
#include "model.h"
#include "read_options.h"
#include "series.h"

namespace kesto {

class LoadedModel {
  public:
    explicit LoadedModel(const std::string& path, const ReadOptions& options = {});
    LoadedModel(const LoadedModel&) = delete;
    LoadedModel& operator=(const LoadedModel&) = delete;

    bool isFit() const { return model_ && !diagnostics_.hasErrors(); }
    const Model& model() const { return *model_; }
    SeriesValues& series() { return *series_; }
    Diagnostics& diagnostics() { return diagnostics_; }
    const Diagnostics& diagnostics() const { return diagnostics_; }

  private:
    Diagnostics diagnostics_;
    std::optional<Model> model_;
    std::unique_ptr<SeriesValues> series_;
};

}  // namespace kesto
