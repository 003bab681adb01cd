#include "balance.h"

#include <algorithm>
#include <cmath>

#include "balance_accounts.h"

namespace kesto {

namespace {

constexpr int kNoRegion = -1;

void conclude(BalanceRow& row) {
    row.error = row.in + row.gain - row.out - row.loss - row.storageChange;
    const double through =
        std::max({std::abs(row.in + row.gain), std::abs(row.out + row.loss), std::abs(row.storageChange)});
    row.relative = row.error == 0 ? 0 : std::abs(row.error) / through;
}

BalanceRow componentRow(const Model& model, const Accounts& accounts, int index) {
    const Component& component = model.components[at(index)];
    const Account& account = accounts.of(index);
    BalanceRow row;
    row.name = component.name;
    row.type = component.type->name;
    row.carries = accounts.carriers().of(index);
    row.notBalanced = account.notBalanced;
    row.in = account.in;
    row.gain = account.gain;
    row.out = account.out + account.ends;
    row.loss = account.loss;
    row.storageChange = account.stored;
    row.tolerance = account.tolerance;
    conclude(row);
    return row;
}

// An output that nobody receives leaves the network; one that several receive has been copied.
void addMember(const Model& model, const Accounts& accounts, int index, BalanceRow& row) {
    const Account& account = accounts.of(index);
    row.gain += account.gain;
    row.loss += account.loss;
    row.out += account.ends;
    row.storageChange += account.stored;
    row.tolerance += account.tolerance;
    for (int port = 1; port <= static_cast<int>(model.components[at(index)].type->out.size()); ++port) {
        if (!accounts.isCounted(index, port)) continue;
        const int receivers = accounts.receivers(index, port);
        if (receivers == 0) row.out += accounts.total(index, port);
        if (receivers > 1) row.gain += (receivers - 1) * accounts.total(index, port);
    }
}

// What crosses the border of parts of the network, and what goes on inside. Only water counts, and only components that
// could be balanced belong to their region.
void addRegions(const Model& model, const Accounts& accounts, const std::vector<int>& regionOf,
                std::vector<BalanceRow>& rows) {
    std::vector<std::size_t> members(rows.size(), 0);
    const auto memberOf = [&](int component) {
        const bool counts =
            accounts.of(component).notBalanced.empty() && accounts.carriers().of(component) == Carries::water;
        return counts ? regionOf[at(component)] : kNoRegion;
    };
    for (int to = 0; to < static_cast<int>(regionOf.size()); ++to) {
        const int region = memberOf(to);
        if (region != kNoRegion) {
            ++members[at(region)];
            addMember(model, accounts, to, rows[at(region)]);
        }
        for (const int index : accounts.inputs(to)) {
            const Connection& connection = model.connections[at(index)];
            const bool isSent = accounts.isCounted(connection.from, connection.fromPort);
            const bool isTaken = accounts.carriers().ofInput(to, connection.toPort) == Carries::water;
            const int leaves = isSent ? memberOf(connection.from) : kNoRegion;
            const int enters = isTaken ? region : kNoRegion;
            if (leaves == enters) continue;
            const double sum = accounts.total(connection.from, connection.fromPort);
            if (leaves != kNoRegion) rows[at(leaves)].out += sum;
            if (enters != kNoRegion) rows[at(enters)].in += sum;
        }
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (members[i] == 0) rows[i].notBalanced = "no water passes through it that could be balanced";
        conclude(rows[i]);
    }
}

BalanceRow emptyRow(BalanceRow::Level level, const std::string& name) {
    BalanceRow row;
    row.level = level;
    row.name = name;
    return row;
}

}  // namespace

bool BalanceRow::isOff() const {
    return notBalanced.empty() && !(std::isfinite(error) && std::abs(error) <= tolerance);
}

bool Balance::isOff() const {
    return std::any_of(rows.begin(), rows.end(), [](const BalanceRow& row) { return row.isOff(); });
}

Balance balanceOf(const Results& results, const RecordingPlan& plan, SeriesValues& series) {
    const Model& model = *results.model;
    const Accounts accounts(results, plan, series);
    std::vector<BalanceRow> network{
        emptyRow(BalanceRow::Level::network, model.title.empty() ? model.path : model.title)};
    addRegions(model, accounts, std::vector<int>(model.components.size(), 0), network);

    std::vector<BalanceRow> groups;
    for (const Group& group : model.groups) {
        groups.push_back(emptyRow(BalanceRow::Level::group, group.name));
    }
    std::vector<int> groupOf;
    for (const Component& component : model.components) {
        groupOf.push_back(component.group < 0 ? kNoRegion : component.group);
    }
    addRegions(model, accounts, groupOf, groups);

    Balance balance;
    balance.rows = std::move(network);
    balance.rows.insert(balance.rows.end(), groups.begin(), groups.end());
    for (int i = 0; i < static_cast<int>(model.components.size()); ++i) {
        if (!model.components[at(i)].type->balance.isOfWater()) continue;
        balance.rows.push_back(componentRow(model, accounts, i));
    }
    return balance;
}

}  // namespace kesto
