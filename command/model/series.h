// Turns sources of values into the daily floats that the engine reads.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "csv_file.h"
#include "diagnostics.h"
#include "model.h"
#include "time_rows.h"

namespace kesto {

using Floats = std::vector<float>;

class SeriesValues {
  public:
    SeriesValues(const Model& model, Diagnostics& diagnostics) : model_(model), diagnostics_(diagnostics) {}

    // One value a step; null when the source cannot be read, which is then reported once. Sources that say the same
    // share one array: of a thousand households most have the same habits.
    std::shared_ptr<const Floats> of(SourceIndex source);

    // Line of the file that a step's value comes from; the source itself where it is no column.
    Place placeOf(SourceIndex source, std::size_t step) const;

  private:
    struct Table {
        std::optional<CsvFile> csv;
        std::optional<TimeRows> rows;  // none: not fit for the run, which has been reported
    };
    std::shared_ptr<const Floats> read(const SeriesSource& source);
    const Table& tableOf(int index);
    std::optional<std::size_t> columnOf(const SeriesSource& source, const CsvFile& csv);
    bool fromColumn(const SeriesSource& source, Floats& values);
    void fromPattern(const SeriesSource& source, Floats& values) const;
    Day dayOf(std::size_t step) const { return model_.simulation.start + static_cast<Day>(step); }

    const Model& model_;
    Diagnostics& diagnostics_;
    std::map<int, Table> tables_;
    std::map<SourceIndex, std::shared_ptr<const Floats>> bySource_;
    std::map<SeriesSource::Content, std::shared_ptr<const Floats>> byContent_;
};

}  // namespace kesto
