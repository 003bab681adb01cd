#include "sweep_part.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstring>
#include <limits>
#include <numeric>
#include <stdexcept>

#include "engine_process.h"
#include "netcdf_file.h"
#include "results_netcdf.h"
#include "run_apart.h"
#include "sweep_csv.h"

namespace kesto {

namespace {

using Id = NetcdfFile::Id;

constexpr std::size_t kMostMembers = 256;
constexpr std::size_t kMostBytes = 256'000'000;
constexpr std::chrono::hours kLongest{1};
constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();

// Rows of the part that one variable holds.
struct Rows {
    Id variable;
    std::size_t count;
    float fill;
};

class Writer {
  public:
    Writer(const SweepShape& shape, const std::string& path, int compression, std::size_t first, std::size_t count)
        : shape_(shape),
          first_(first),
          count_(count),
          file_(path, compression),
          member_(file_.dimension("member", count)),
          time_(file_.dimension("time", shape.periods.size())) {}

    void write(const SweepAttributes& attributes, const std::vector<float>& values) {
        file_.attribute(NetcdfFile::kGlobal, "Conventions", "CF-1.8");
        file_.attribute(NetcdfFile::kGlobal, "every", toText(shape_.every));
        for (const auto& [name, text] : attributes) {
            file_.attribute(NetcdfFile::kGlobal, name, text);
        }
        writeMembers();
        writeTime();
        for (const SweepTable& series : shape_.tables) {
            define(series);
        }
        writeValues(values.data());
        file_.close();
    }

  private:
    void writeMembers() {
        const Id id = file_.integers("member", member_);
        file_.attribute(id, "long_name", "row of the design, counted from 1");
        std::vector<int> members(count_);
        std::iota(members.begin(), members.end(), static_cast<int>(first_));
        file_.write(id, members);
    }

    void writeTime() {
        const Id id = file_.integers("time", time_);
        file_.attribute(id, "standard_name", "time");
        file_.attribute(id, "long_name", fmt::format("{} of the step", toText(shape_.every)));
        file_.attribute(id, "units", "days since 1970-01-01 00:00:00");
        file_.attribute(id, "calendar", "proleptic_gregorian");
        file_.attribute(id, "axis", "T");
        std::vector<int> days, last;
        for (const Period& period : shape_.periods) {
            days.push_back(static_cast<int>(period.first));
            last.push_back(static_cast<int>(period.last));
        }
        file_.write(id, days);
        if (shape_.every == Every::day) return;
        file_.attribute(id, "long_name", fmt::format("first day of the {}", toText(shape_.every)));
        const Id end = file_.integers("last_day", time_);
        file_.attribute(end, "long_name", fmt::format("last day of the {}", toText(shape_.every)));
        file_.attribute(end, "units", "days since 1970-01-01 00:00:00");
        file_.attribute(end, "calendar", "proleptic_gregorian");
        file_.write(end, last);
    }

    void define(const SweepTable& series) {
        const SeriesTable& table = *series.table;
        const std::string dimension(table.dimension);
        const Id rows = file_.dimension(dimension, series.names.size());
        const Id names = file_.texts(dimension + "_name", rows, series.names);
        file_.attribute(names, "long_name", "name in the model");
        std::string coordinates = dimension + "_name";
        if (table.isOfFlows()) {
            const Id carries = file_.texts(dimension + "_carries", rows, series.carries);
            file_.attribute(carries, "long_name", "what the signal is: water, a demand, or either");
            coordinates += " " + dimension + "_carries";
        }
        if (shape_.every != Every::day) coordinates += " last_day";
        const std::string step = shape_.every == Every::day ? "step" : std::string(toText(shape_.every));
        const auto add = [&](std::string_view name, std::string_view meaning, std::string_view unit, float fill,
                             const char* method) {
            const Id id =
                file_.cube(std::string(name), {member_, rows, time_}, {chunk(), 1, shape_.periods.size()}, fill);
            file_.attribute(id, "long_name", meaning);
            file_.attribute(id, "units", unitOrOne(unit));
            file_.attribute(id, "coordinates", coordinates);
            if (shape_.every != Every::day) file_.attribute(id, "cell_methods", method);
            rows_.push_back({id, series.names.size(), fill});
        };
        add(table.variable, fmt::format("{} {}", table.meaning, step), table.unit, kMissing,
            table.isOfFlows() ? "time: sum" : "time: point");
        if (table.isOfFlows())
            add(table.quality, "quality of the flow", "", kNoQuality, "time: mean (weighted by flow)");
    }

    std::size_t chunk() const { return std::min(kMembersOfChunk, count_); }

    // A chunk that is not written reads as missing, and takes no space.
    void writeValues(const float* values) {
        const std::size_t periods = shape_.periods.size();
        for (std::size_t from = 0; from < count_; from += kMembersOfChunk) {
            const std::size_t members = std::min(kMembersOfChunk, count_ - from);
            for (const Rows& rows : rows_) {
                for (std::size_t row = 0; row < rows.count; ++row, values += members * periods) {
                    const auto isFill = [bits = std::bit_cast<std::uint32_t>(rows.fill)](float value) {
                        return std::bit_cast<std::uint32_t>(value) == bits;
                    };
                    if (std::all_of(values, values + members * periods, isFill)) continue;
                    file_.writeBlock(rows.variable, {from, row, 0}, {members, 1, periods}, values);
                }
            }
        }
    }

    const SweepShape& shape_;
    std::size_t first_, count_;
    NetcdfFile file_;
    Id member_, time_;
    std::vector<Rows> rows_;
};

}  // namespace

std::size_t membersPerPart(const SweepShape& shape) {
    const std::size_t bytes = std::max<std::size_t>(shape.values() * sizeof(float), 1);
    return std::min(kMostMembers, std::bit_floor(std::max<std::size_t>(kMostBytes / bytes, 1)));
}

void requireParts(PartFormat format) {
    if (format == PartFormat::netcdf) runApart("cannot write parts", kLongest, requireNetcdf);
}

std::string partName(std::size_t number, PartFormat format) {
    return fmt::format("part-{:05}.{}", number, format == PartFormat::csv ? "csv" : "nc");
}

SweepPart::SweepPart(const SweepShape& shape, std::size_t first, std::size_t count)
    : shape_(shape), first_(first), unset_(count), isSet_(count), values_(count * shape.values()) {}

void SweepPart::set(std::size_t member, std::span<const float> values) {
    const std::size_t index = member - first_;
    if (member < first_ || index >= count() || values.size() != shape_.values())
        throw std::logic_error("a member that is not of this part");
    if (!isSet_[index]) --unset_;
    isSet_[index] = true;
    const std::size_t group = index / kMembersOfChunk * kMembersOfChunk;
    const std::size_t members = std::min(kMembersOfChunk, count() - group);
    const std::size_t periods = shape_.periods.size();
    float* to = values_.data() + group * values.size() + (index - group) * periods;
    for (std::size_t row = 0; row < shape_.rows(); ++row, to += members * periods) {
        std::memcpy(to, values.data() + row * periods, periods * sizeof(float));
    }
}

void SweepPart::setMissing(std::size_t member) {
    std::vector<float> values(shape_.values());
    layOutMissing(shape_, values);
    set(member, values);
}

void SweepPart::write(const std::string& path, const SweepAttributes& attributes, int compression) const {
    if (!isComplete()) throw std::logic_error("a part that lacks members");
    runApart(fmt::format("cannot write {}", path), kLongest, [&] {
        keepNothingMore();
        Writer(shape_, path, compression, first_, count()).write(attributes, values_);
    });
}

void SweepPart::writeCsv(const std::string& path) const {
    if (!isComplete()) throw std::logic_error("a part that lacks members");
    const std::size_t periods = shape_.periods.size();
    writeSweepCsv(path, shape_, first_, count(), [&](std::size_t row, std::size_t member) {
        const std::size_t group = member / kMembersOfChunk * kMembersOfChunk;
        const std::size_t members = std::min(kMembersOfChunk, count() - group);
        return values_.data() + group * shape_.values() + (row * members + member - group) * periods;
    });
}

}  // namespace kesto
