#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "balance.h"

namespace kesto {

namespace {

constexpr std::size_t kManyComponents = 40;

std::string_view word(BalanceRow::Level level) {
    switch (level) {
        case BalanceRow::Level::component:
            return "component";
        case BalanceRow::Level::group:
            return "group";
        case BalanceRow::Level::network:
            break;
    }
    return "network";
}

std::string_view word(Carries carries) {
    return carries == Carries::demand ? "demand" : "water";
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"') result += '"';
        result += c;
    }
    return result + "\"";
}

}  // namespace

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
        text += fmt::format("  {:<9}  {:<{}}  {:<6}", word(row.level), row.name, width, word(row.carries));
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
    std::filesystem::create_directories(folder);
    const std::string path = (std::filesystem::path(folder) / "balance.csv").string();
    std::ofstream file(path, std::ios::binary);
    file << "level,name,type,carries,in [L],gained [L],out [L],lost [L],storage_change [L],error [L],relative_error,"
            "tolerance [L],state\n";
    for (const BalanceRow& row : balance.rows) {
        file << fmt::format("{},{},{},{},", word(row.level), row.name, row.type, word(row.carries));
        if (!row.notBalanced.empty()) {
            file << ",,,,,,,," << quoted("not balanced: " + row.notBalanced) << '\n';
            continue;
        }
        file << fmt::format("{},{},{},{},{},{},{},{},{}\n", row.in, row.gain, row.out, row.loss, row.storageChange,
                            row.error, row.relative, row.tolerance, row.isOff() ? "off" : "balanced");
    }
    file.close();
    if (!file) throw std::runtime_error(fmt::format("cannot write {}: {}", path, std::strerror(errno)));
    return path;
}

}  // namespace kesto
