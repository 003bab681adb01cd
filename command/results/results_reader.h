// Results of a run, read back from the files that it wrote: CSV or NetCDF.
#pragma once

#include <string>
#include <vector>

#include "calendar.h"
#include "written_files.h"

namespace kesto {

struct NamedSeries {
    std::string name;
    std::string unit;
    std::vector<float> values;
};

// Flows and storages in L stand before those in mm, whatever the files' order.
struct ReadResults {
    std::vector<Day> days;
    std::vector<NamedSeries> flows, storages, qualities, storeQualities, potentials;
};

// Reads only files of the list. Empty when nothing was recorded; throws std::runtime_error when a file cannot be read.
ReadResults readResults(const std::string& folder, const std::vector<WrittenFile>& files);

// The same with states alone.
ReadResults readStates(const std::string& folder, const std::vector<WrittenFile>& files);

// The file of the list that holds states; null when there is none.
const WrittenFile* statesFile(const std::vector<WrittenFile>& files);

}  // namespace kesto
