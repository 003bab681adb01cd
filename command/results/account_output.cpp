#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "account.h"
#include "csv_file.h"
#include "diagnostics.h"
#include "files.h"

namespace kesto {

namespace {

constexpr std::size_t kNamesShown = 3;
constexpr std::size_t kLinesShown = 10;
constexpr double kLeastRounding = 0.05;  // what one decimal shows

using Entries = std::vector<const AccountEntry*>;

// Where each component matters by itself.
bool isListed(AccountKind kind) {
    return kind == AccountKind::waterBody || kind == AccountKind::openEnd || kind == AccountKind::mains ||
           kind == AccountKind::created || kind == AccountKind::destroyed || kind == AccountKind::unexplained;
}

std::string line(std::string_view heading, double litres, std::string_view who) {
    const std::string amount = std::isnan(litres) ? "not a number" : fmt::format("{:.1f}", litres);
    return fmt::format("       {:<14} {:>16}{}{}\n", heading, amount, who.empty() ? "" : "  ", who);
}

std::string described(const Account& account, const AccountEntry& entry) {
    std::string text(account.nameOf(entry));
    if (!entry.reason.empty()) {
        text += fmt::format(" ({}): {}", account.model->components[at(entry.component)].type->name, entry.reason);
    }
    return text;
}

std::string namesOf(const Account& account, const Entries& entries) {
    std::string text;
    for (std::size_t i = 0; i < std::min(entries.size(), kNamesShown); ++i) {
        text += (i == 0 ? "" : ", ") + std::string(account.nameOf(*entries[i]));
    }
    if (entries.size() > kNamesShown) text += fmt::format(" and {} more", entries.size() - kNamesShown);
    return text;
}

// The largest first.
std::string linesOf(const Account& account, AccountKind kind, Entries entries) {
    const auto size = [](const AccountEntry* entry) {
        return std::isnan(entry->litres) ? std::numeric_limits<double>::infinity() : entry->litres;
    };
    std::stable_sort(entries.begin(), entries.end(),
                     [&](const AccountEntry* a, const AccountEntry* b) { return size(a) > size(b); });
    double sum = 0;
    for (const AccountEntry* entry : entries) {
        sum += entry->litres;
    }
    const std::string_view heading = info(kind).heading;
    if (!isListed(kind)) return line(heading, sum, namesOf(account, entries));
    std::string text;
    double shown = 0;
    for (std::size_t i = 0; i < std::min(entries.size(), kLinesShown); ++i) {
        text += line(i == 0 ? heading : "", entries[i]->litres, described(account, *entries[i]));
        shown += entries[i]->litres;
    }
    if (entries.size() > kLinesShown) {
        text += line("", sum - shown, fmt::format("{} more components", entries.size() - kLinesShown));
    }
    return text;
}

std::string sideOf(const Account& account, bool isIn) {
    std::string text;
    for (std::size_t i = 0; i < kAccountKinds; ++i) {
        const auto kind = static_cast<AccountKind>(i);
        Entries entries;
        for (const AccountEntry& entry : account.entries) {
            if (entry.isIn == isIn && entry.kind == kind) entries.push_back(&entry);
        }
        const bool isTiny = kind == AccountKind::rounding && account.total(isIn, kind) < kLeastRounding;
        if (!entries.empty() && !isTiny) text += linesOf(account, kind, entries);
    }
    text += line("total", account.total(isIn), "");
    return text.replace(2, 3, isIn ? "in " : "out");
}

// Why parts of the network are not in the account, with all components that have the same reason.
std::string gapsOf(const Account& account) {
    std::vector<std::pair<std::string, std::vector<std::string_view>>> reasons;
    for (const auto& [component, reason] : account.notRecorded) {
        const std::string_view name = account.model->components[at(component)].name;
        const auto known = std::find_if(reasons.begin(), reasons.end(),
                                        [&reason = reason](const auto& one) { return one.first == reason; });
        if (known == reasons.end()) {
            reasons.push_back({reason, {name}});
        } else {
            known->second.push_back(name);
        }
    }
    std::string text;
    for (const auto& [reason, names] : reasons) {
        text += fmt::format("  not in it: {}; {}\n", listOf(names, "and"), reason);
    }
    return text;
}

}  // namespace

std::string toText(const Account& account) {
    if (account.entries.empty() && account.notRecorded.empty()) return {};
    std::string text = "\nWater of the network [L]\n";
    if (!account.entries.empty()) text += sideOf(account, true) + sideOf(account, false);
    return text + gapsOf(account);
}

std::string writeAccountCsv(const Account& account, const std::string& folder) {
    std::string text = "side,kind,component,litres,reason\n";
    for (const AccountEntry& entry : account.entries) {
        text +=
            fmt::format("{},{},{},{},{}\n", entry.isIn ? "in" : "out", info(entry.kind).name,
                        csvCell(std::string(account.nameOf(entry))), entry.litres, csvCell(std::string(entry.reason)));
    }
    const std::string path = joined(folder, "account.csv");
    writeFile(path, text);
    return path;
}

}  // namespace kesto
