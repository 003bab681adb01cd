#include "sweep_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "number_format.h"

namespace kesto {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// The columns of all members, in the order in which they first have them.
class ColumnUnion {
  public:
    ColumnUnion(const Slice& slice, const Journal& journal) : places_(journal.columns().size()) {
        std::map<std::string, std::size_t> known;
        for (std::size_t member = slice.first; member <= slice.last; ++member) {
            const std::size_t index = journal.columnsOf(member);
            const MemberColumns& columns = journal.columns()[index];
            if (!places_[index].empty()) continue;
            for (std::size_t i = 0; i < columns.all.size(); ++i) {
                const auto [place, isNew] = known.emplace(columns.all[i].name, all_.size());
                if (isNew) {
                    all_.push_back(columns.all[i]);
                    isKey_.push_back(i < columns.key);
                }
                places_[index].push_back(place->second);
            }
        }
    }

    const std::vector<MemberColumn>& all() const { return all_; }
    bool isKey(std::size_t column) const { return isKey_[column]; }

    std::vector<std::string> cellsOf(const Journal::Row& row) const {
        std::vector<std::string> cells(all_.size());
        for (std::size_t i = 0; i < row.values.size(); ++i) {
            cells[places_[row.columns][i]] = row.values[i];
        }
        return cells;
    }

  private:
    std::vector<MemberColumn> all_;
    std::vector<bool> isKey_;
    std::vector<std::vector<std::size_t>> places_;  // of the columns of each kind of member
};

std::optional<FigureRange> rangeOf(const MemberColumn& column, std::vector<double>& values, std::size_t first) {
    FigureRange range{column, kNone, kNone, kNone, 0, 0};
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isnan(values[i])) continue;
        if (!(values[i] >= range.lowest)) {
            range.lowest = values[i];
            range.lowestMember = first + i;
        }
        if (!(values[i] <= range.highest)) {
            range.highest = values[i];
            range.highestMember = first + i;
        }
    }
    if (!(range.highest > range.lowest)) return std::nullopt;
    std::erase_if(values, [](double value) { return std::isnan(value); });
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    range.median = *middle;
    if (values.size() % 2 == 0) range.median = (range.median + *std::max_element(values.begin(), middle)) / 2;
    return range;
}

std::string lineOf(std::size_t member, const std::vector<std::string>& keys, const Journal::Row& row,
                   const std::vector<std::string>& cells) {
    std::string line = fmt::format("{}", member);
    for (const std::string& key : keys) {
        line += ',' + csvCell(key);
    }
    line += ',' + row.outcome + ',' + csvCell(row.message);
    for (const std::string& cell : cells) {
        line += ',' + cell;
    }
    return line + '\n';
}

}  // namespace

SweepSummary writeMembersTable(const std::string& path, const Design& design, const Slice& slice,
                               const Journal& journal) {
    const ColumnUnion columns(slice, journal);
    SweepSummary summary;
    summary.keys = design.keys();
    summary.columns = columns.all();
    std::map<std::string, std::size_t> outcomes;
    std::vector<std::vector<double>> values(summary.columns.size());
    std::ofstream file(path, std::ios::binary);
    file << "member";
    for (const std::string& key : design.keys()) {
        file << ',' << csvCell(key);
    }
    file << ",outcome,message";
    for (const MemberColumn& column : summary.columns) {
        file << ',' << csvCell(column.name);
    }
    file << '\n';
    for (std::size_t member = slice.first; member <= slice.last; ++member) {
        const Journal::Row row = journal.read(member);
        const std::vector<std::string> cells = columns.cellsOf(row);
        file << lineOf(member, design.cellsOf(member), row, cells);
        ++outcomes[row.outcome];
        if (!row.findings.empty()) summary.findings.add(nlohmann::ordered_json::parse(row.findings));
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (columns.isKey(i)) values[i].push_back(parseNumber(cells[i]).value_or(kNone));
        }
    }
    file.close();
    if (!file) throw std::runtime_error(fmt::format("cannot write {}", path));
    summary.outcomes.assign(outcomes.begin(), outcomes.end());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (const auto range = rangeOf(summary.columns[i], values[i], slice.first)) summary.varying.push_back(*range);
    }
    return summary;
}

}  // namespace kesto
