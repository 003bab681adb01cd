// Turns sources of values into the daily floats that the engine reads.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "csv_file.h"
#include "diagnostics.h"
#include "model.h"

namespace kesto {

using Floats = std::vector<float>;

class SeriesValues {
  public:
    SeriesValues(const Model& model, Diagnostics& diagnostics) : model_(model), diagnostics_(diagnostics) {}

    // One value a step; null when the source cannot be read, which is then reported once. The same source gives the
    // same array.
    std::shared_ptr<const Floats> of(SourceIndex source);

    // Line of the file that a step's value comes from; the source itself where it is no column.
    Place placeOf(SourceIndex source, std::size_t step) const;

  private:
    struct Table {
        std::optional<CsvFile> csv;
        std::size_t firstRow = 0;  // of the run
        bool good = false;
    };
    const Table& tableOf(int index);
    bool findFirstRow(const TimeTable& description, Table& table);
    bool checkDates(const CsvFile& csv, std::size_t timeColumn, std::size_t firstRow);
    bool fromColumn(const SeriesSource& source, Floats& values);
    void fromPattern(const SeriesSource& source, Floats& values) const;

    const Model& model_;
    Diagnostics& diagnostics_;
    std::map<int, Table> tables_;
    std::map<SourceIndex, std::shared_ptr<const Floats>> values_;
    std::map<std::string, std::shared_ptr<const Floats>> columns_;  // shared between sources that say the same
};

}  // namespace kesto
