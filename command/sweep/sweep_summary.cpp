#include "sweep_summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "display.h"
#include "files.h"
#include "shown_unit.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostShown = 40;

Json rowOf(const FigureRange& range) {
    return {{"name", range.column.name},
            {"unit", range.column.unit},
            {"lowest", range.lowest},
            {"lowest_member", range.lowestMember},
            {"median", range.median},
            {"highest", range.highest},
            {"highest_member", range.highestMember}};
}

bool isOfAccount(const Json& figure) {
    return figure.at("name").get<std::string>().starts_with("account.");
}

using Row = std::vector<std::string>;

Row shownRow(const Json& figure) {
    const double lowest = figure.at("lowest"), highest = figure.at("highest");
    const ShownUnit shown = shownUnit(figure.at("unit").get_ref<const std::string&>(), std::max(-lowest, highest));
    const auto value = [&](const char* key) { return shownNumber(figure.at(key), shown); };
    const auto member = [&](const char* key) { return fmt::format("({})", figure.at(key).get<std::size_t>()); };
    return {printable(figure.at("name").get<std::string>()),
            std::string(shown.unit),
            value("lowest"),
            member("lowest_member"),
            value("median"),
            value("highest"),
            member("highest_member")};
}

}  // namespace

Json membersJson(const SweepSubject& subject, const Json& made, const SweepSummary& summary, const Findings& findings,
                 const std::vector<WrittenFile>& files) {
    Json columns = Json::array(), varying = Json::array(), outcomes = Json::object();
    for (std::size_t i = 0; i < summary.columns.all.size(); ++i) {
        const MemberColumn& column = summary.columns.all[i];
        columns.push_back({{"name", column.name}, {"unit", column.unit}, {"key", i < summary.columns.key}});
    }
    for (const FigureRange& range : summary.varying) {
        varying.push_back(rowOf(range));
    }
    for (const auto& [outcome, count] : summary.outcomes) {
        outcomes[outcome] = count;
    }
    return {{"model", subject.model},
            {"title", subject.title},
            {"design_table", subject.designTable},
            {"made_of", made},
            {"keys", summary.keys},
            {"key_units", subject.keyUnits},
            {"columns", columns},
            {"outcomes", outcomes},
            {"varying", varying},
            {"warnings", findings.rows()},
            {"files", fileRows(files)}};
}

std::size_t unfinishedIn(const Json& members) {
    std::size_t count = 0;
    for (const auto& [outcome, number] : members.at("outcomes").items()) {
        if (outcome != "finished") count += number.get<std::size_t>();
    }
    return count;
}

std::string sweepText(const Json& members, const std::string& folder) {
    std::string text;
    std::size_t all = 0;
    for (const auto& [outcome, count] : members.at("outcomes").items()) {
        all += count.get<std::size_t>();
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", withThousands(count), outcome);
    }
    text = fmt::format("{} member{}: {}\n", withThousands(all), all == 1 ? "" : "s", text);
    Json varying = members.at("varying");  // the account tells the same of the network once more
    varying.erase(std::remove_if(varying.begin(), varying.end(), isOfAccount), varying.end());
    if (!varying.empty()) {
        std::vector<Row> rows{{"", "", "lowest", "(member)", "median", "highest", "(member)"}};
        for (std::size_t i = 0; i < std::min(varying.size(), kMostShown); ++i) {
            rows.push_back(shownRow(varying[i]));
        }
        text += "\nFigures that vary\n" + alignedRows(rows);
        if (varying.size() > kMostShown) text += fmt::format("  and {} more\n", varying.size() - kMostShown);
    }
    text += "\nResults\n";
    for (const Json& file : members.at("files")) {
        text += fmt::format("  {}\n", joined(folder, file.at("file").get<std::string>()));
    }
    return text + fmt::format("  {}\n", joined(folder, kMembersFile));
}

}  // namespace kesto
