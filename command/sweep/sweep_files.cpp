#include "sweep_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "csv_file.h"
#include "files.h"
#include "number_format.h"

namespace kesto {

namespace {

constexpr std::size_t kMostValues = 5'000'000;  // in memory, beside key figures
constexpr std::string_view kBeforeFigure = "figure.";
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// The columns of all members: key figures first, each in the order in which members first have them.
class ColumnUnion {
  public:
    ColumnUnion(const Slice& slice, const Journal& journal) : places_(journal.columns().size()) {
        std::vector<std::size_t> order;  // of what members have, by their first
        for (std::size_t member = slice.first; member <= slice.last; ++member) {
            const std::size_t index = journal.columnsOf(member);
            if (std::find(order.begin(), order.end(), index) == order.end()) order.push_back(index);
        }
        std::map<std::string, std::size_t> known;
        for (const bool isKey : {true, false}) {
            for (const std::size_t index : order) {
                addOf(journal.columns()[index], isKey, known, places_[index]);
            }
            if (isKey) union_.key = union_.all.size();
        }
    }

    const MemberColumns& columns() const { return union_; }

    std::vector<std::string> cellsOf(const Journal::Row& row) const {
        std::vector<std::string> cells(union_.all.size());
        for (std::size_t i = 0; i < row.values.size(); ++i) {
            cells[places_[row.columns][i]] = row.values[i];
        }
        return cells;
    }

  private:
    void addOf(const MemberColumns& columns, bool isKey, std::map<std::string, std::size_t>& known,
               std::vector<std::size_t>& places) {
        const std::size_t first = isKey ? 0 : columns.key, last = isKey ? columns.key : columns.all.size();
        for (std::size_t i = first; i < last; ++i) {
            const auto [place, isNew] = known.emplace(columns.all[i].name, union_.all.size());
            if (isNew) union_.all.push_back(columns.all[i]);
            places.push_back(place->second);
        }
    }

    MemberColumns union_;
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

bool isLimited(std::size_t columns, const Slice& slice) {
    return columns > kMostValues / slice.size();
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

std::string columnOf(const std::string& figure, const std::vector<std::string>& keys) {
    const bool isKey = std::find(keys.begin(), keys.end(), figure) != keys.end();
    return isKey ? std::string(kBeforeFigure) + figure : figure;
}

std::string figureIn(const std::string& column, const std::vector<std::string>& keys) {
    const std::string rest = column.starts_with(kBeforeFigure) ? column.substr(kBeforeFigure.size()) : column;
    return columnOf(rest, keys) == column ? rest : column;
}

SweepSummary writeMembersTable(const std::string& path, const MemberCells& given, const Slice& slice,
                               const Journal& journal) {
    const ColumnUnion all(slice, journal);
    SweepSummary summary;
    summary.keys = given.keys;
    summary.columns = all.columns();
    for (MemberColumn& column : summary.columns.all) {
        column.name = columnOf(column.name, given.keys);
    }
    const std::vector<MemberColumn>& columns = summary.columns.all;
    std::map<std::string, std::size_t> outcomes;
    std::vector<std::vector<double>> values(isLimited(columns.size(), slice) ? summary.columns.key : columns.size());
    std::ofstream file(pathOf(path), std::ios::binary);
    file << "member";
    for (const std::string& key : given.keys) {
        file << ',' << csvCell(key);
    }
    file << ",outcome,message";
    for (const MemberColumn& column : columns) {
        file << ',' << csvCell(column.name);
    }
    file << '\n';
    for (std::size_t member = slice.first; member <= slice.last; ++member) {
        const Journal::Row row = journal.read(member);
        const std::vector<std::string> cells = all.cellsOf(row);
        file << lineOf(member, given.of(member), row, cells);
        ++outcomes[row.outcome];
        if (!row.findings.empty()) summary.findings.add(nlohmann::ordered_json::parse(row.findings));
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i].push_back(parseNumber(cells[i]).value_or(kNone));
        }
    }
    file.close();
    if (!file) throw std::runtime_error(fmt::format("cannot write {}", path));
    summary.outcomes.assign(outcomes.begin(), outcomes.end());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (const auto range = rangeOf(columns[i], values[i], slice.first)) summary.varying.push_back(*range);
    }
    return summary;
}

}  // namespace kesto
