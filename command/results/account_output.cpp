#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "account.h"
#include "csv_file.h"
#include "diagnostics.h"
#include "display.h"
#include "files.h"

namespace kesto {

namespace {

constexpr std::size_t kNamesShown = 3;
constexpr std::size_t kNamesInBrief = 1;
constexpr double kLeastRounding = 0.05;  // what one decimal shows

using Entries = std::vector<const AccountEntry*>;

// Where each component matters by itself.
bool isListed(AccountKind kind) {
    return kind == AccountKind::waterBody || kind == AccountKind::openEnd || kind == AccountKind::mains ||
           kind == AccountKind::created || kind == AccountKind::destroyed || kind == AccountKind::unexplained;
}

std::string described(const Account& account, const AccountEntry& entry) {
    std::string text(account.nameOf(entry));
    if (!entry.reason.empty()) {
        text += fmt::format(" ({}): {}", account.model->components[at(entry.component)].type->name, entry.reason);
    }
    return text;
}

// The account as lines: in full one for each component that matters by itself, else one for each kind.
class Lines {
  public:
    Lines(const Account& account, Detail detail)
        : account_(account), detail_(detail), unit_(shownUnit("L", largestOf(account))) {}

    std::string text() const {
        return fmt::format("\nWater of the network [{}]\n", unit_.unit) + sideOf(true) + sideOf(false);
    }

  private:
    static double largestOf(const Account& account) {
        double largest = 0;
        for (const AccountEntry& entry : account.entries) {
            if (std::isfinite(entry.litres)) largest = std::max(largest, std::abs(entry.litres));
        }
        return largest;
    }

    std::string line(std::string_view heading, double litres, std::string_view who) const {
        const std::string amount = std::isnan(litres) ? "not a number" : shownNumber(litres, unit_);
        return fmt::format("       {:<14} {:>16}{}{}\n", heading, amount, who.empty() ? "" : "  ", who);
    }

    std::string namesOf(const Entries& entries) const {
        std::string text;
        const std::size_t most = detail_ == Detail::full ? kNamesShown : kNamesInBrief;
        for (std::size_t i = 0; i < std::min(entries.size(), most); ++i) {
            text += (i == 0 ? "" : ", ") + shownName(account_.nameOf(*entries[i]), detail_);
        }
        if (entries.size() > most) text += fmt::format(" and {} more", withThousands(entries.size() - most));
        return text;
    }

    // The largest first.
    std::string linesOf(AccountKind kind, Entries entries) const {
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
        if (detail_ == Detail::brief || !isListed(kind)) return line(heading, sum, namesOf(entries));
        std::string text;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            text += line(i == 0 ? heading : "", entries[i]->litres, described(account_, *entries[i]));
        }
        return text;
    }

    std::string sideOf(bool isIn) const {
        std::string text;
        for (std::size_t i = 0; i < kAccountKinds; ++i) {
            const auto kind = static_cast<AccountKind>(i);
            Entries entries;
            for (const AccountEntry& entry : account_.entries) {
                if (entry.isIn == isIn && entry.kind == kind) entries.push_back(&entry);
            }
            const double total = account_.total(isIn, kind);
            const bool isTiny = kind == AccountKind::rounding && total * unit_.factor < kLeastRounding;
            if (!entries.empty() && !isTiny) text += linesOf(kind, entries);
        }
        text += line("total", account_.total(isIn), "");
        return text.replace(2, 3, isIn ? "in " : "out");
    }

    const Account& account_;
    Detail detail_;
    ShownUnit unit_;
};

// Why parts of the network are not in the account, with all components that have the same reason.
std::string gapsOf(const Account& account, Detail detail) {
    if (detail == Detail::brief && !account.notRecorded.empty()) {
        const std::size_t count = account.notRecorded.size();
        return fmt::format("  not in it: {} component{}; --full says why\n", withThousands(count),
                           count == 1 ? "" : "s");
    }
    std::vector<std::pair<std::string, std::vector<std::string_view>>> reasons;
    for (const auto& [component, reason] : account.notRecorded) {
        const std::string_view name = account.model->components[at(component)].name;
        const auto known = std::find_if(reasons.begin(), reasons.end(),
                                        [&wanted = reason](const auto& one) { return one.first == wanted; });
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

std::string toText(const Account& account, Detail detail) {
    if (account.entries.empty() && account.notRecorded.empty()) return {};
    const std::string lines = account.entries.empty() ? "\nWater of the network\n" : Lines(account, detail).text();
    return lines + gapsOf(account, detail);
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
