// Tables of series that several models read: each is parsed once.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "csv_file.h"
#include "diagnostics.h"
#include "time_rows.h"

namespace kesto {

using Floats = std::vector<float>;

// What was read, and what there was to say of it: whoever takes it over says it again. What cannot be read is not kept.
template <class T>
struct Kept {
    T value;
    Diagnostics said;
};

struct SeriesCache {
    static constexpr std::size_t kMostColumns = 1000;  // more are read when they are asked for

    std::map<std::string, Kept<std::shared_ptr<const CsvFile>>> tables;  // by path
    std::map<std::string, Kept<std::shared_ptr<const TimeRows>>> rows;   // by table and period
    std::map<std::string, Kept<std::shared_ptr<const Floats>>> columns;  // by table, period, column and conversion
};

}  // namespace kesto
