#include <fmt/format.h>

#include <algorithm>

#include "balance.h"
#include "csv_file.h"
#include "files.h"

namespace kesto {

namespace {

constexpr std::size_t kManyComponents = 40;

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

std::string numbersOf(const BalanceRow& row, const std::vector<Column>& columns) {
    std::string text;
    for (const Column column : columns) {
        text +=
            column == Column::error ? fmt::format(" {:>10.2g}", row[column]) : fmt::format(" {:>13.1f}", row[column]);
    }
    return text + (row.isOff() ? "  DOES NOT BALANCE\n" : "\n");
}

}  // namespace

std::string_view toText(BalanceRow::Level level) {
    static constexpr std::string_view kLevels[] = {"component", "group", "network"};
    return kLevels[static_cast<std::size_t>(level)];
}

// Components of a large network stand in the file alone, unless there is something to say; columns that are empty in
// all rows are left out.
std::string toText(const Balance& balance) {
    const bool all = balance.rows.size() <= kManyComponents;
    std::vector<const BalanceRow*> rows;
    std::size_t width = 7;
    for (const BalanceRow& row : balance.rows) {
        const bool isShown =
            all || row.level != BalanceRow::Level::component || row.isOff() || !row.notBalanced.empty();
        if (!isShown) continue;
        rows.push_back(&row);
        width = std::max(width, row.name.size());
    }
    const std::vector<Column> columns = columnsOf(rows);
    std::string text = fmt::format("\nBalance [L]\n  {:<9}  {:<{}}  {:<6}", "", "", width, "");
    for (const Column column : columns) {
        text += fmt::format(" {:>{}}", info(column).heading, column == Column::error ? 10 : 13);
    }
    text += '\n';
    for (const BalanceRow* row : rows) {
        text += fmt::format("  {:<9}  {:<{}}  {:<6}", toText(row->level), row->name, width, toText(row->carries));
        text +=
            row->notBalanced.empty() ? numbersOf(*row, columns) : fmt::format(" not balanced: {}\n", row->notBalanced);
    }
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
