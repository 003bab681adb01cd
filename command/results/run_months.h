// The months of a run, the first and the last of them perhaps in part.
#pragma once

#include <cstddef>
#include <vector>

#include "calendar.h"

namespace kesto {

class RunMonths {
  public:
    RunMonths(Day start, std::size_t steps);

    std::size_t count() const { return begins_.size() - 1; }
    std::size_t begin(std::size_t month) const { return begins_[month]; }
    std::size_t end(std::size_t month) const { return begins_[month + 1]; }
    std::size_t days(std::size_t month) const { return end(month) - begin(month); }

    int year(std::size_t month) const;
    int ofYear(std::size_t month) const;  // 1 to 12
    bool isWhole(std::size_t month) const;

  private:
    Day start_;
    std::vector<std::size_t> begins_;  // step of each month's first day, and the end of the last
};

// Values of months as the sums of their years, in order.
std::vector<double> byYear(const RunMonths& months, const std::vector<double>& values);

}  // namespace kesto
