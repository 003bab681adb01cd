#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "balance.h"
#include "csv_file.h"
#include "display.h"
#include "files.h"

namespace kesto {

namespace {

constexpr std::size_t kManyComponents = 40;
constexpr std::size_t kRowsInBrief = 20;

std::vector<Column> columnsOf(const std::vector<const BalanceRow*>& rows) {
    std::vector<Column> columns;
    for (std::size_t i = 0; i < kColumns; ++i) {
        const auto column = static_cast<Column>(i);
        const bool always = column == Column::in || column == Column::out || column >= Column::storageChange;
        const bool occurs = std::any_of(rows.begin(), rows.end(), [&](const BalanceRow* row) {
            return row->notBalanced.empty() && (*row)[column] != 0;
        });
        if (always || occurs) columns.push_back(column);
    }
    return columns;
}

bool isNotable(const BalanceRow& row) {
    return row.isOff() || !row.notBalanced.empty();
}

double largestOf(const std::vector<const BalanceRow*>& rows) {
    double largest = 0;
    for (const BalanceRow* row : rows) {
        for (std::size_t i = 0; i < kColumns && row->notBalanced.empty(); ++i) {
            const double size = std::abs((*row)[static_cast<Column>(i)]);
            if (std::isfinite(size)) largest = std::max(largest, size);
        }
    }
    return largest;
}

// An error stays in litres: most are tiny.
std::string numbersOf(const BalanceRow& row, const std::vector<Column>& columns, const ShownUnit& unit) {
    std::string text;
    for (const Column column : columns) {
        text += column == Column::error ? fmt::format(" {:>10.2g}", row[column])
                                        : fmt::format(" {:>13}", shownNumber(row[column], unit));
    }
    return text + (row.isOff() ? "  DOES NOT BALANCE\n" : "\n");
}

}  // namespace

std::string_view toText(BalanceRow::Level level) {
    static constexpr std::string_view kLevels[] = {"component", "group", "network"};
    return kLevels[static_cast<std::size_t>(level)];
}

// In brief, components of a large network stand in the file alone, unless there is something to say; columns that are
// empty in all rows are left out.
std::string toText(const Balance& balance, Detail detail) {
    const bool all = detail == Detail::full || balance.rows.size() <= kManyComponents;
    std::vector<const BalanceRow*> rows;
    for (const BalanceRow& row : balance.rows) {
        if (all || row.level != BalanceRow::Level::component || isNotable(row)) rows.push_back(&row);
    }
    const std::size_t most = all ? rows.size() : std::min(rows.size(), kRowsInBrief);
    const std::size_t more = rows.size() - most;
    if (more > 0) {
        std::stable_partition(rows.begin(), rows.end(), [](const BalanceRow* row) {
            return row->level == BalanceRow::Level::network || isNotable(*row);
        });
        rows.resize(most);
    }
    std::size_t width = 7;
    for (const BalanceRow* row : rows) {
        width = std::max(width, row->name.size());
    }
    const std::vector<Column> columns = columnsOf(rows);
    const ShownUnit unit = shownUnit("L", largestOf(rows));
    std::string text = fmt::format("\nBalance [{}]\n  {:<9}  {:<{}}  {:<6}", unit.unit, "", "", width, "");
    for (const Column column : columns) {
        text += column == Column::error ? fmt::format(" {:>10}", fmt::format("{} [L]", info(column).heading))
                                        : fmt::format(" {:>13}", info(column).heading);
    }
    text += '\n';
    for (const BalanceRow* row : rows) {
        text += fmt::format("  {:<9}  {:<{}}  {:<6}", toText(row->level), row->name, width, toText(row->carries));
        text += row->notBalanced.empty() ? numbersOf(*row, columns, unit)
                                         : fmt::format(" not balanced: {}\n", row->notBalanced);
    }
    if (more > 0) text += fmt::format("  and {} more; --full shows all\n", withThousands(more));
    return text;
}

std::string writeBalanceCsv(const Balance& balance, const std::string& folder) {
    std::string text = "level,name,type,carries";
    for (std::size_t i = 0; i < kColumns; ++i) {
        text += fmt::format(",{} [L]", info(static_cast<Column>(i)).name);
    }
    text += ",relative_error,tolerance [L],state\n";
    for (const BalanceRow& row : balance.rows) {
        text += fmt::format("{},{},{},{}", toText(row.level), csvCell(row.name), row.type, toText(row.carries));
        if (!row.notBalanced.empty()) {
            text += std::string(kColumns + 3, ',') + csvCell("not balanced: " + row.notBalanced) + '\n';
            continue;
        }
        for (const double litres : row.litres) {
            text += fmt::format(",{}", litres);
        }
        text += fmt::format(",{},{},{}\n", row.relative, row.tolerance, row.isOff() ? "off" : "balanced");
    }
    const std::string path = joined(folder, "balance.csv");
    writeFile(path, text);
    return path;
}

}  // namespace kesto
