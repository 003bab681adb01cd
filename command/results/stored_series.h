// The daily series that a run has left in its files, CSV or NetCDF: what there is, and the values of those that are
// asked for. Never all of them at once: of a large network they are gigabytes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "calendar.h"
#include "written_files.h"

namespace kesto {

enum class Quantity : std::uint8_t { flow, storage, quality, storeQuality, potential };
std::string_view toText(Quantity quantity);

struct SeriesEntry {
    Quantity quantity;
    std::string of;    // an output, as in "tank:overflow", a component, or a potential of a group, as in "house:energy"
    std::string unit;  // of qualities empty

    // One name for each: "tank:overflow", "tank:overflow:quality", "tank:storage", "tank:quality", "house:energy".
    std::string name() const;
};

class StoredSeries {
  public:
    // Of files of the list alone. All calls throw std::runtime_error when a file cannot be read.
    StoredSeries(const std::string& folder, const std::vector<WrittenFile>& files);
    ~StoredSeries();

    const std::vector<Day>& days() const { return days_; }

    // Whatever the files' format and order: by quantity, those in L before those in mm. A NetCDF file may have an entry
    // without values.
    const std::vector<SeriesEntry>& entries() const { return entries_; }

    // Of entries by their index: a value for each day; nothing where none was written.
    std::vector<std::vector<float>> valuesOf(const std::vector<std::size_t>& wanted) const;

    class Files;

  private:
    std::unique_ptr<Files> files_;
    std::vector<Day> days_;
    std::vector<SeriesEntry> entries_;
    std::vector<std::size_t> places_;  // of each entry among the files' own
};

}  // namespace kesto
