// Which row of a table stands for which day of the run.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "csv_file.h"
#include "date_reading.h"
#include "diagnostics.h"
#include "model.h"

namespace kesto {

class TimeRows {
  public:
    // None when a day has no row or two, or the dates cannot be read, which is reported. What was understood that is
    // not plain CSV is put into a note.
    static std::optional<TimeRows> of(const CsvFile& csv, const TimeTable& description, const Simulation& simulation,
                                      Diagnostics& diagnostics);

    std::size_t rowOf(std::size_t step) const { return rows_[step]; }

  private:
    std::vector<std::size_t> rows_;  // of each step
};

}  // namespace kesto
