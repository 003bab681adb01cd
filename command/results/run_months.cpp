#include "run_months.h"

namespace kesto {

RunMonths::RunMonths(Day start, std::size_t steps) : start_(start), begins_{0} {
    const std::vector<std::uint8_t> months = monthsOf(start, steps);
    for (std::size_t step = 1; step < steps; ++step) {
        if (months[step] != months[step - 1]) begins_.push_back(step);
    }
    if (steps > 0) begins_.push_back(steps);
}

int RunMonths::year(std::size_t month) const {
    return dateOf(start_ + static_cast<Day>(begin(month))).year;
}

int RunMonths::ofYear(std::size_t month) const {
    return dateOf(start_ + static_cast<Day>(begin(month))).month;
}

bool RunMonths::isWhole(std::size_t month) const {
    const Day next = start_ + static_cast<Day>(end(month));
    return dateOf(start_ + static_cast<Day>(begin(month))).day == 1 && dateOf(next).day == 1;
}

std::vector<double> byYear(const RunMonths& months, const std::vector<double>& values) {
    std::vector<double> years;
    for (std::size_t month = 0; month < months.count(); ++month) {
        if (month == 0 || months.year(month) != months.year(month - 1)) years.push_back(0);
        years.back() += values[month];
    }
    return years;
}

}  // namespace kesto
