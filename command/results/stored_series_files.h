// How the two formats of results hold daily series.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "stored_series.h"

namespace kesto {

class StoredSeries::Files {
  public:
    virtual ~Files() = default;
    virtual std::vector<Day> days() const = 0;
    virtual std::vector<SeriesEntry> entries() const = 0;
    // Of entries by their index.
    virtual std::vector<std::vector<float>> valuesOf(const std::vector<std::size_t>& wanted) const = 0;
};

std::unique_ptr<StoredSeries::Files> openCsvSeries(const std::string& folder, const std::vector<WrittenFile>& files);
std::unique_ptr<StoredSeries::Files> openNetcdfSeries(const std::string& path);

}  // namespace kesto
