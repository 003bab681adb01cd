#include <fmt/format.h>

#include "balance.h"
#include "csv_file.h"
#include "files.h"

namespace kesto {

namespace {

constexpr std::size_t kManyComponents = 40;

}  // namespace

std::string_view toText(BalanceRow::Level level) {
    static constexpr std::string_view kLevels[] = {"component", "group", "network"};
    return kLevels[static_cast<std::size_t>(level)];
}

// Components of a large network stand in the file alone, unless there is something to say.
std::string toText(const Balance& balance) {
    const bool all = balance.rows.size() <= kManyComponents;
    std::size_t width = 7;
    const auto isShown = [&](const BalanceRow& row) {
        return all || row.level != BalanceRow::Level::component || row.isOff() || !row.notBalanced.empty();
    };
    for (const BalanceRow& row : balance.rows) {
        if (isShown(row)) width = std::max(width, row.name.size());
    }
    std::string text = fmt::format("\nBalance [L]\n  {:<9}  {:<{}}  {:<6} {:>13} {:>13} {:>13} {:>13} {:>13} {:>10}\n",
                                   "", "", width, "", "in", "gained", "out", "lost", "stored", "error");
    for (const BalanceRow& row : balance.rows) {
        if (!isShown(row)) continue;
        text += fmt::format("  {:<9}  {:<{}}  {:<6}", toText(row.level), row.name, width, toText(row.carries));
        if (!row.notBalanced.empty()) {
            text += fmt::format(" not balanced: {}\n", row.notBalanced);
            continue;
        }
        text += fmt::format(" {:>13.1f} {:>13.1f} {:>13.1f} {:>13.1f} {:>13.1f} {:>10.2g}{}\n", row.in, row.gain,
                            row.out, row.loss, row.storageChange, row.error, row.isOff() ? "  DOES NOT BALANCE" : "");
    }
    return text;
}

std::string writeBalanceCsv(const Balance& balance, const std::string& folder) {
    std::string text =
        "level,name,type,carries,in [L],gained [L],out [L],lost [L],storage_change [L],error [L],relative_error,"
        "tolerance [L],state\n";
    for (const BalanceRow& row : balance.rows) {
        text += fmt::format("{},{},{},{},", toText(row.level), csvCell(row.name), row.type, toText(row.carries));
        if (!row.notBalanced.empty()) {
            text += ",,,,,,,," + csvCell("not balanced: " + row.notBalanced) + '\n';
            continue;
        }
        text += fmt::format("{},{},{},{},{},{},{},{},{}\n", row.in, row.gain, row.out, row.loss, row.storageChange,
                            row.error, row.relative, row.tolerance, row.isOff() ? "off" : "balanced");
    }
    const std::string path = joined(folder, "balance.csv");
    writeFile(path, text);
    return path;
}

}  // namespace kesto
