// A part of a sweep, read back: to make the whole of slices.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "netcdf_reader.h"
#include "sweep_part.h"

namespace kesto {

class SweepPartReader {
  public:
    // All calls throw std::runtime_error, with the path and the reason.
    explicit SweepPartReader(const std::string& path);

    const SweepShape& shape() const { return shape_; }
    std::size_t first() const { return first_; }
    std::size_t count() const { return count_; }

    // Those that were given when the part was written.
    const SweepAttributes& attributes() const { return attributes_; }

    // Values of a member as layOut() gave them; of one that is missing, as layOutMissing() does. Valid until the next
    // call. Fast when members come one after the other.
    std::span<const float> member(std::size_t member);

  private:
    void readMembers();
    void readPeriods();
    void readTables();
    void readGroup(std::size_t group);
    [[noreturn]] void refuse(const std::string& reason) const;

    std::string path_;
    NetcdfReader file_;
    SweepShape shape_;
    std::size_t first_ = 0, count_ = 0;
    SweepAttributes attributes_;
    std::size_t group_;          // first index of those in memory; count_: none
    std::vector<float> values_;  // of the group, by member
};

}  // namespace kesto
