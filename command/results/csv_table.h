// Tables of many daily series as CSV: a row for each step, values in the shortest digits that give the same bits.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace kesto {

struct CsvColumn {
    std::string header;  // as a cell
    const float* values;
    std::size_t stride = 1;  // floats from one step to the next
};

// Writes a file whose rows begin with `beginOf` each step, under the header `begin`. Throws std::runtime_error.
void writeCsvTable(const std::string& path, std::size_t steps, const std::function<std::string(std::size_t)>& beginOf,
                   const std::vector<CsvColumn>& columns, const std::string& begin = "date");

}  // namespace kesto
