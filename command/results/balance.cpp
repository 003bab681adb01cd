#include "balance.h"

#include <algorithm>
#include <cmath>

namespace kesto {

namespace {

constexpr int kNoRegion = -1;

constexpr std::array<ColumnInfo, kColumns> kColumnTable{{
    {"in", "in"},
    {"rain", "rain"},
    {"drawn", "drawn"},
    {"released", "released"},
    {"taken_for_delivered", "taken"},
    {"created", "created"},
    {"out", "out"},
    {"evaporated", "evaporated"},
    {"infiltrated", "infiltrated"},
    {"lost", "lost"},
    {"destroyed", "destroyed"},
    {"storage_change", "stored"},
    {"error", "error"},
}};

// The column that a type's own term belongs to.
constexpr std::array<std::pair<Term, Column>, 8> kPlaces{{
    {Term::rain, Column::rain},
    {Term::drawn, Column::drawn},
    {Term::released, Column::released},
    {Term::takenForDelivered, Column::takenForDelivered},
    {Term::created, Column::created},
    {Term::evaporated, Column::evaporated},
    {Term::infiltrated, Column::infiltrated},
    {Term::lost, Column::lost},
}};

bool comesIn(Column column) {
    return column < Column::out;
}

// Below 0 it is the reverse: what creates a negative amount destroys.
void addCreated(BalanceRow& row, double litres) {
    (litres < 0 ? row[Column::destroyed] : row[Column::created]) += std::abs(litres);
}

void conclude(BalanceRow& row) {
    double in = 0, out = 0;
    for (std::size_t i = 0; i < kColumns - 1; ++i) {
        const auto column = static_cast<Column>(i);
        if (column != Column::storageChange) (comesIn(column) ? in : out) += row.litres[i];
    }
    row[Column::error] = in - out - row[Column::storageChange];
    const double through = std::max({std::abs(in), std::abs(out), std::abs(row[Column::storageChange])});
    row.relative = row[Column::error] == 0 ? 0 : std::abs(row[Column::error]) / through;
}

class Rows {
  public:
    Rows(const Recorded& recorded, const Outlets& outlets, const ComponentSums& sums)
        : recorded_(recorded), outlets_(outlets), sums_(sums) {}

    BalanceRow of(int component) const {
        const ComponentSum& sum = sums_.of(component);
        BalanceRow row;
        row.name = recorded_.component(component).name;
        row.type = recorded_.type(component).name;
        row.carries = recorded_.carriers().of(component);
        row.notBalanced = sum.notBalanced;
        row.tolerance = sum.tolerance;
        for (const auto& [term, column] : kPlaces) {
            row[column] += sum.of(term);
        }
        row[Column::out] += sum.of(Term::served) + sum.of(Term::used) + sum.of(Term::ended);
        row[Column::storageChange] = sum.storedByOne;
        row.carries == Carries::demand ? addDemand(component, row) : addWater(component, row);
        settle(component, row);
        conclude(row);
        return row;
    }

  private:
    double inputs(int component) const {
        double sum = 0;
        for (const int index : recorded_.inputs(component)) {
            const Connection& connection = recorded_.connection(index);
            const bool counts =
                recorded_.carriers().ofInput(component, connection.toPort) == recorded_.carriers().of(component);
            if (counts) sum += recorded_.sum(connection.from, connection.fromPort).total;
        }
        return sum;
    }

    double outputs(int component) const {
        double sum = 0;
        for (int port = 1; port <= recorded_.outputs(component); ++port) {
            const bool counts = outlets_.of(component, port).counts && !recorded_.type(component).isReport(port) &&
                                recorded_.carriers().ofOutput(component, port) == recorded_.carriers().of(component);
            if (counts) sum += recorded_.sum(component, port).total;
        }
        return sum;
    }

    void addWater(int component, BalanceRow& row) const {
        row[Column::in] += inputs(component) + sums_.of(component).scaled;
        row[Column::out] += outputs(component);
        addCreated(row, sums_.of(component).of(Term::added));
    }

    // The water that was asked for comes in, and what was asked of the component goes out.
    void addDemand(int component, BalanceRow& row) const {
        const Type& type = recorded_.type(component);
        row[type.in.empty() ? Column::takenForDelivered : Column::in] += outputs(component);
        row[Column::takenForDelivered] += sums_.of(component).of(Term::ended);
        if (!type.out.empty()) row[Column::out] += inputs(component);
        row[Column::out] += sums_.of(component).scaled;
        addCreated(row, -sums_.of(component).of(Term::added));
        row[Column::storageChange] = -row[Column::storageChange];
    }

    // What nobody is asked for was drawn, or came from nothing.
    void settle(int component, BalanceRow& row) const {
        const BalanceWiring& wiring = recorded_.type(component).balance.wiring;
        if (wiring.asksBy > 0 && !outlets_.asks(component, wiring.asksBy)) {
            row[Column::created] += std::exchange(row[Column::takenForDelivered], 0);
        }
        if (wiring.drawsFromSource && outlets_.of(component, 1).isEnd()) {
            row[Column::drawn] += std::exchange(row[Column::in], 0);
        }
    }

    const Recorded& recorded_;
    const Outlets& outlets_;
    const ComponentSums& sums_;
};

// What crosses the border of parts of the network, and what goes on inside, each component as often as it counts.
// Only components that could be balanced belong to their region.
class Regions {
  public:
    Regions(const Recorded& recorded, const Multiplicity& multiplicity, const ComponentSums& sums,
            const WaterPaths& paths)
        : recorded_(recorded), multiplicity_(multiplicity), sums_(sums), paths_(paths) {}

    void fill(const std::vector<int>& regionOf, std::vector<BalanceRow>& rows) const {
        std::vector<std::size_t> members(rows.size(), 0);
        const auto regionOfMember = [&](int component) {
            return component != kOutside && sums_.isBalanced(component) ? regionOf[at(component)] : kNoRegion;
        };
        for (int i = 0; i < recorded_.components(); ++i) {
            const int region = regionOfMember(i);
            if (region == kNoRegion) continue;
            ++members[at(region)];
            addMember(i, rows[at(region)]);
        }
        for (const Movement& movement : paths_.movements()) {
            const int from = regionOfMember(movement.from), to = regionOfMember(movement.to);
            if (from == to) continue;
            if (from != kNoRegion) rows[at(from)][Column::out] += movement.litres;
            const bool isDrawn = movement.from == kOutside && movement.border == Border::source;
            if (to != kNoRegion) rows[at(to)][isDrawn ? Column::drawn : Column::in] += movement.litres;
        }
        for (const Creation& creation : paths_.creations()) {
            const int region = regionOfMember(creation.component);
            if (region != kNoRegion) addCreated(rows[at(region)], creation.litres);
        }
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (members[i] == 0) rows[i].notBalanced = "no water passes through it that could be balanced";
            conclude(rows[i]);
        }
    }

  private:
    void addMember(int component, BalanceRow& row) const {
        const ComponentSum& sum = sums_.of(component);
        row[Column::rain] += sum.ofAll(Term::rain);
        row[Column::drawn] += sum.ofAll(Term::drawn);
        row[Column::evaporated] += sum.ofAll(Term::evaporated);
        row[Column::infiltrated] += sum.ofAll(Term::infiltrated);
        row[Column::lost] += sum.ofAll(Term::lost);
        row[Column::storageChange] += paths_.stored(component);
        row.tolerance += multiplicity_.of(component).greatest * sum.tolerance;
    }

    const Recorded& recorded_;
    const Multiplicity& multiplicity_;
    const ComponentSums& sums_;
    const WaterPaths& paths_;
};

BalanceRow emptyRow(BalanceRow::Level level, const std::string& name) {
    BalanceRow row;
    row.level = level;
    row.name = name;
    return row;
}

}  // namespace

const ColumnInfo& info(Column column) {
    return kColumnTable[static_cast<std::size_t>(column)];
}

bool BalanceRow::isOff() const {
    const double error = (*this)[Column::error];
    return notBalanced.empty() && !(std::isfinite(error) && std::abs(error) <= tolerance);
}

bool Balance::isOff() const {
    return std::any_of(rows.begin(), rows.end(), [](const BalanceRow& row) { return row.isOff(); });
}

Balance balanceOf(const Recorded& recorded, const Outlets& outlets, const Multiplicity& multiplicity,
                  const ComponentSums& sums, const WaterPaths& paths) {
    const Model& model = recorded.model();
    const Regions regions(recorded, multiplicity, sums, paths);
    Balance balance;
    balance.rows.push_back(emptyRow(BalanceRow::Level::network, model.title.empty() ? model.path : model.title));
    regions.fill(std::vector<int>(model.components.size(), 0), balance.rows);

    if (!recorded.isWhole()) return balance;
    std::vector<BalanceRow> groups;
    for (const Group& group : model.groups) {
        groups.push_back(emptyRow(BalanceRow::Level::group, group.name));
    }
    std::vector<int> groupOf;
    for (const Component& component : model.components) {
        groupOf.push_back(component.group < 0 ? kNoRegion : component.group);
    }
    regions.fill(groupOf, groups);
    balance.rows.insert(balance.rows.end(), groups.begin(), groups.end());

    const Rows rows(recorded, outlets, sums);
    for (int i = 0; i < recorded.components(); ++i) {
        if (recorded.type(i).balance.isOfWater()) balance.rows.push_back(rows.of(i));
    }
    return balance;
}

}  // namespace kesto
