// A part of what the members of a sweep have recorded, as CSV: part-00000.csv and so on, a row for each member and
// period.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "sweep_shape.h"

namespace kesto {

// Values of members `first`, `first` + 1 and so on: `at` gives where those of a row and a member stand, for all
// periods.
using ValuesAt = std::function<const float*(std::size_t row, std::size_t member)>;

// Throws std::runtime_error.
void writeSweepCsv(const std::string& path, const SweepShape& shape, std::size_t first, std::size_t count,
                   const ValuesAt& at);

// One part of several that hold other members of it, in their order. Throws std::runtime_error.
void joinSweepCsv(const std::vector<std::string>& paths, const std::string& path);

}  // namespace kesto
