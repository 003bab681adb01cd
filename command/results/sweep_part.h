// A part of what the members of a sweep have recorded, as NetCDF, part-00000.nc and so on, or as CSV.
//
// In NetCDF variables are those of results.nc with the member as first dimension: (member, flow, time). Chunks hold 64
// members of one flow, all days: other shapes take minutes to write where this takes seconds, and a member is read as
// fast. The same members give the same bytes, in whatever order they were set.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "sweep_shape.h"

namespace kesto {

inline constexpr std::size_t kMembersOfChunk = 64;

// Parts begin where their number times this many members of the whole design come before them.
std::size_t membersPerPart(const SweepShape& shape);

enum class PartFormat { netcdf, csv };

// Throws std::runtime_error when parts cannot be written since there is no NetCDF library.
void requireParts(PartFormat format);

// "part-00003.nc", "part-00003.csv"
std::string partName(std::size_t number, PartFormat format);

// Global attributes, by name.
using SweepAttributes = std::vector<std::pair<std::string, std::string>>;

class SweepPart {
  public:
    // Of members `first`, `first` + 1 and so on, counted from 1 in the whole design. Holds all values in memory until
    // they are written. The shape must live as long.
    SweepPart(const SweepShape& shape, std::size_t first, std::size_t count);

    std::size_t first() const { return first_; }
    std::size_t count() const { return isSet_.size(); }
    bool isComplete() const { return unset_ == 0; }

    // Values as layOut() gives them.
    void set(std::size_t member, std::span<const float> values);
    void setMissing(std::size_t member);

    // Writes a file for all members, each of which has been set. `compression` is 0, none, to 9. Throws
    // std::runtime_error. A process of its own writes: the NetCDF library in this one would double what each member
    // costs to fork.
    void write(const std::string& path, const SweepAttributes& attributes, int compression = 1) const;
    void writeCsv(const std::string& path) const;

  private:
    const SweepShape& shape_;
    std::size_t first_, unset_;
    std::vector<bool> isSet_;
    std::vector<float> values_;  // of 64 members at a time: by row, member and period
};

}  // namespace kesto
