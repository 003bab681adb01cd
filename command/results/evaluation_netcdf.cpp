#include "evaluation_netcdf.h"

#include <cmath>

namespace kesto {

namespace {

using Id = NetcdfFile::Id;

void writeTexts(NetcdfFile& file, const std::string& name, const char* meaning, Id dimension,
                const std::vector<std::string>& values) {
    file.attribute(file.texts(name, dimension, values), "long_name", meaning);
}

void writeNumbers(NetcdfFile& file, const std::string& name, std::string_view unit, const char* coordinates,
                  Id dimension, const std::vector<double>& values) {
    const Id id = file.doubles(name, dimension);
    if (!unit.empty()) file.attribute(id, "units", unit);
    file.attribute(id, "coordinates", coordinates);
    file.write(id, values);
}

void writeAccount(NetcdfFile& file, const Account& account) {
    if (account.entries.empty()) return;
    const Id dimension = file.dimension("account", account.entries.size());
    std::vector<std::string> sides, kinds, components, reasons;
    std::vector<double> litres;
    for (const AccountEntry& entry : account.entries) {
        sides.emplace_back(entry.isIn ? "in" : "out");
        kinds.emplace_back(info(entry.kind).name);
        components.emplace_back(account.nameOf(entry));
        reasons.emplace_back(entry.reason);
        litres.push_back(entry.litres);
    }
    writeTexts(file, "account_side", "in or out", dimension, sides);
    writeTexts(file, "account_kind", "where water comes from or goes to", dimension, kinds);
    writeTexts(file, "account_component", "component; empty: of none", dimension, components);
    writeTexts(file, "account_reason", "why the component creates or destroys water", dimension, reasons);
    writeNumbers(file, "account_litres", "L", "account_side account_kind account_component", dimension, litres);
}

void writeFigures(NetcdfFile& file, const Figures& figures) {
    if (figures.rows.empty()) return;
    const Id dimension = file.dimension("figure", figures.rows.size());
    const auto textOf = [](const std::optional<Day>& day) { return day ? toText(*day) : std::string(); };
    std::vector<std::string> names, units, from, to;
    std::vector<double> values;
    for (const Figure& figure : figures.rows) {
        names.push_back(figures.nameOf(figure));
        units.push_back(figures.unitOf(figure));
        from.push_back(textOf(figure.from));
        to.push_back(textOf(figure.to));
        values.push_back(figure.value);
    }
    writeTexts(file, "figure_name", "network or component, and figure", dimension, names);
    writeTexts(file, "figure_unit", "unit of the value", dimension, units);
    writeTexts(file, "figure_from", "first day on which it holds; empty: it has none", dimension, from);
    writeTexts(file, "figure_to", "last day on which it holds", dimension, to);
    writeNumbers(file, "figure_value", "", "figure_name", dimension, values);
}

void writeBalance(NetcdfFile& file, const Balance& balance) {
    const Id dimension = file.dimension("balance", balance.rows.size());
    std::vector<std::string> names, levels, reasons;
    for (const BalanceRow& row : balance.rows) {
        names.push_back(row.name);
        levels.emplace_back(toText(row.level));
        reasons.push_back(row.notBalanced);
    }
    writeTexts(file, "balance_name", "component, group or title of the model", dimension, names);
    writeTexts(file, "balance_level", "component, group or network", dimension, levels);
    writeTexts(file, "balance_not_balanced", "why a component is not balanced; empty: it is", dimension, reasons);
    const auto numbers = [&](std::string_view name, const char* unit, const auto& valueOf) {
        std::vector<double> values;
        for (const BalanceRow& row : balance.rows) {
            values.push_back(row.notBalanced.empty() ? valueOf(row) : std::nan(""));
        }
        writeNumbers(file, "balance_" + std::string(name), unit, "balance_name balance_level", dimension, values);
    };
    for (std::size_t i = 0; i < kColumns; ++i) {
        numbers(info(static_cast<Column>(i)).name, "L", [&](const BalanceRow& row) { return row.litres[i]; });
    }
    numbers("relative_error", "1", [](const BalanceRow& row) { return row.relative; });
    numbers("tolerance", "L", [](const BalanceRow& row) { return row.tolerance; });
}

}  // namespace

void writeEvaluation(NetcdfFile& file, const Evaluation& evaluation) {
    writeAccount(file, evaluation.account);
    writeFigures(file, evaluation.figures);
    if (evaluation.showsBalance) writeBalance(file, evaluation.balance);
}

}  // namespace kesto
