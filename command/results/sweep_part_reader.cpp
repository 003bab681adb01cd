#include "sweep_part_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace kesto {

SweepPartReader::SweepPartReader(const std::string& path) : path_(path), file_(path) {
    attributes_ = file_.textAttributes();
    const auto every =
        std::find_if(attributes_.begin(), attributes_.end(), [](const auto& a) { return a.first == "every"; });
    const auto known = every == attributes_.end() ? std::nullopt : everyFrom(every->second);
    if (!known || !file_.has("member")) refuse("it is no part of a sweep");
    shape_.every = *known;
    std::erase_if(attributes_, [](const auto& a) {
        return a.first == "every" || a.first == "Conventions" || a.first.starts_with('_');
    });
    readMembers();
    readPeriods();
    readTables();
    group_ = count_;
}

void SweepPartReader::refuse(const std::string& reason) const {
    throw std::runtime_error(fmt::format("cannot read {}: {}", path_, reason));
}

void SweepPartReader::readMembers() {
    const std::vector<int> members = file_.integers("member");
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (members[0] < 1 || members[i] != members[0] + static_cast<int>(i)) refuse("its members are not in order");
    }
    if (members.empty()) refuse("it has no member");
    first_ = static_cast<std::size_t>(members[0]);
    count_ = members.size();
}

void SweepPartReader::readPeriods() {
    const std::vector<int> first = file_.integers("time");
    const std::vector<int> last = shape_.every == Every::day ? first : file_.integers("last_day");
    if (first.empty()) refuse("it has no days");
    shape_.periods = periodsOf(first.front(), last.empty() ? first.front() : last.back(), shape_.every);
    const auto agrees = [](const Period& period, int day) { return period.first == day; };
    if (!std::equal(shape_.periods.begin(), shape_.periods.end(), first.begin(), first.end(), agrees))
        refuse("its days are not in order");
}

void SweepPartReader::readTables() {
    for (const SeriesTable& table : kSeriesTables) {
        if (!file_.has(std::string(table.variable))) continue;
        SweepTable series{&table, file_.texts(fmt::format("{}_name", table.dimension)), {}};
        if (table.isOfFlows()) series.carries = file_.texts(fmt::format("{}_carries", table.dimension));
        shape_.tables.push_back(std::move(series));
    }
}

void SweepPartReader::readGroup(std::size_t group) {
    const std::size_t members = std::min(kMembersOfChunk, count_ - group);
    const std::size_t periods = shape_.periods.size();
    values_.assign(members * shape_.values(), 0);
    float* row = values_.data();
    const auto take = [&](std::string_view variable, std::size_t rows) {
        const std::vector<float> block = file_.block(std::string(variable), {group, 0, 0}, {members, rows, periods});
        for (std::size_t member = 0; member < members; ++member) {
            std::memcpy(row + member * shape_.values(), block.data() + member * rows * periods,
                        rows * periods * sizeof(float));
        }
        row += rows * periods;
    };
    for (const SweepTable& series : shape_.tables) {
        take(series.table->variable, series.names.size());
        if (series.table->isOfFlows()) take(series.table->quality, series.names.size());
    }
    group_ = group;
}

std::span<const float> SweepPartReader::member(std::size_t member) {
    const std::size_t index = member - first_;
    if (member < first_ || index >= count_) refuse(fmt::format("it has no member {}", member));
    if (const std::size_t group = index / kMembersOfChunk * kMembersOfChunk; group != group_) readGroup(group);
    return {values_.data() + (index - group_) * shape_.values(), shape_.values()};
}

}  // namespace kesto
