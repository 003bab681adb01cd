#include "evaluation_json.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace kesto {

using Json = nlohmann::ordered_json;

namespace {

Json numberOrNull(double value) {
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

}  // namespace

Json accountRows(const Account& account) {
    Json rows = Json::array();
    for (const AccountEntry& entry : account.entries) {
        Json row{{"side", entry.isIn ? "in" : "out"},
                 {"kind", info(entry.kind).name},
                 {"component", entry.component == kOutside ? Json(nullptr) : Json(account.nameOf(entry))},
                 {"litres", entry.litres}};
        if (!entry.reason.empty()) row["reason"] = entry.reason;
        rows.push_back(std::move(row));
    }
    return rows;
}

Json gapRows(const Account& account) {
    Json rows = Json::array();
    for (const auto& [component, reason] : account.notRecorded) {
        rows.push_back({{"component", account.model->components[at(component)].name}, {"reason", reason}});
    }
    return rows;
}

Json figureRows(const Figures& figures) {
    const auto day = [](const std::optional<Day>& value) { return value ? Json(toText(*value)) : Json(nullptr); };
    Json rows = Json::array();
    for (const Figure& figure : figures.rows) {
        Json row{
            {"name", figures.nameOf(figure)}, {"value", numberOrNull(figure.value)}, {"unit", figures.unitOf(figure)}};
        if (figure.info->isDated) row.update({{"from", day(figure.from)}, {"to", day(figure.to)}});
        rows.push_back(std::move(row));
    }
    return rows;
}

Json tankRows(const Figures& figures) {
    Json tanks = Json::array();
    for (std::size_t i = 0; i < figures.model->components.size(); ++i) {
        const Component& component = figures.model->components[i];
        if (component.code != code::kTank) continue;
        const auto value = [&](std::string_view name) {
            return numberOrNull(figures.find(static_cast<int>(i), name)->value);
        };
        tanks.push_back({{"name", component.name},
                         {"unit", "L"},
                         {"demand", value("demand")},
                         {"deficit", value("unmet")},
                         {"served", value("reliability_volume")}});
    }
    return tanks;
}

Json balanceRows(const Balance& balance) {
    Json rows = Json::array();
    for (const BalanceRow& row : balance.rows) {
        Json entry{{"level", toText(row.level)}, {"name", row.name}, {"carries", toText(row.carries)}};
        if (!row.notBalanced.empty()) {
            entry["not_balanced"] = row.notBalanced;
        } else {
            entry["unit"] = "L";
            for (std::size_t i = 0; i < kColumns; ++i) {
                entry[std::string(info(static_cast<Column>(i)).name)] = row.litres[i];
            }
            entry.update({{"relative_error", row.relative}, {"tolerance", row.tolerance}, {"balanced", !row.isOff()}});
        }
        rows.push_back(std::move(entry));
    }
    return rows;
}

}  // namespace kesto
