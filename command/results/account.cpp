#include "account.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

namespace kesto {

namespace {

constexpr std::array<AccountKindInfo, kAccountKinds> kKindTable{{
    {"rain", "rain", true, false},
    {"drawn", "drawn", true, false},
    {"mains", "mains", true, false},
    {"water_body", "water body", false, true},
    {"open_end", "open end", false, true},
    {"used", "used", false, true},
    {"evaporated", "evaporated", false, true},
    {"infiltrated", "infiltrated", false, true},
    {"lost", "lost", false, true},
    {"storage", "storage", true, true},
    {"not_recorded", "not recorded", true, true},
    {"created", "created", true, false},
    {"destroyed", "destroyed", false, true},
    {"unexplained", "unexplained", true, true},
    {"rounding", "rounding", true, true},
}};

class Bookkeeper {
  public:
    explicit Bookkeeper(const Recorded& recorded)
        : recorded_(recorded), remainders_(static_cast<std::size_t>(recorded.components()), 0) {}

    // Comes into a component or leaves it, from outside the network or to there.
    void add(bool isIn, AccountKind kind, int component, double litres, int place, std::string_view reason = {}) {
        if (litres == 0) return;
        double& entry = entries_[{!isIn, kind, place, reason}];
        entry += litres;
        if (std::isnan(entry)) entry = std::numeric_limits<double>::quiet_NaN();  // of no sign
        pass(isIn, component, litres);
    }

    // What comes in as less than nothing goes out, and the reverse.
    void addEither(bool isIn, AccountKind in, AccountKind out, int component, double litres, std::string_view reason) {
        const bool comesIn = (litres < 0) != isIn;
        add(comesIn, comesIn ? in : out, component, std::abs(litres), component, reason);
    }

    void pass(bool isIn, int component, double litres) { remainders_[at(component)] += isIn ? litres : -litres; }

    // Errors that rounding does not explain stand by component, as far as its water was recorded; what is left after
    // all is rounding.
    void close(const Balance& balance, Account& account) {
        for (const BalanceRow& row : balance.rows) {
            if (row.level != BalanceRow::Level::component || !row.isOff()) continue;
            const int component = recorded_.model().findComponent(row.name);
            const double litres = remainders_[at(component)];
            if (std::isnan(litres)) continue;
            addEither(false, AccountKind::unexplained, AccountKind::unexplained, component, litres, {});
        }
        for (const auto& [key, litres] : entries_) {
            const auto& [isOut, kind, place, reason] = key;
            account.entries.push_back({!isOut, kind, place, litres, reason});
        }
        const double left = account.total(true) - account.total(false);
        if (left == 0 || std::isnan(left)) return;
        const bool isRounding = recorded_.isWhole() || !balance.rows.front().isOff();
        const AccountEntry rest{left < 0, isRounding ? AccountKind::rounding : AccountKind::unexplained, kOutside,
                                std::abs(left)};
        const auto firstOut = std::find_if(account.entries.begin(), account.entries.end(),
                                           [](const AccountEntry& entry) { return !entry.isIn; });
        account.entries.insert(rest.isIn ? firstOut : account.entries.end(), rest);
    }

  private:
    using Key = std::tuple<bool, AccountKind, int, std::string_view>;

    const Recorded& recorded_;
    std::map<Key, double> entries_;
    std::vector<double> remainders_;  // of each component what came in and did not go out
};

void addOwn(const Recorded& recorded, const ComponentSums& sums, const WaterPaths& paths, Bookkeeper& books) {
    for (int i = 0; i < recorded.components(); ++i) {
        const ComponentSum& sum = sums.of(i);
        books.add(true, AccountKind::rain, i, sum.ofAll(Term::rain), i);
        books.add(true, AccountKind::drawn, i, sum.ofAll(Term::drawn), i);
        books.add(false, AccountKind::evaporated, i, sum.ofAll(Term::evaporated), i);
        books.add(false, AccountKind::infiltrated, i, sum.ofAll(Term::infiltrated), i);
        books.add(false, AccountKind::lost, i, sum.ofAll(Term::lost), i);
        books.addEither(false, AccountKind::storage, AccountKind::storage, i, paths.stored(i), {});
    }
}

}  // namespace

const AccountKindInfo& info(AccountKind kind) {
    return kKindTable[static_cast<std::size_t>(kind)];
}

AccountKind kindOf(Border border) {
    switch (border) {
        case Border::mains:
            return AccountKind::mains;
        case Border::source:
            return AccountKind::drawn;
        case Border::waterBody:
            return AccountKind::waterBody;
        case Border::openEnd:
            return AccountKind::openEnd;
        case Border::use:
            return AccountKind::used;
        case Border::notRecorded:
            break;
    }
    return AccountKind::notRecorded;
}

std::string_view Account::nameOf(const AccountEntry& entry) const {
    return entry.component == kOutside ? std::string_view() : model->components[at(entry.component)].name;
}

double Account::total(bool isIn) const {
    double sum = 0;
    for (const AccountEntry& entry : entries) {
        if (entry.isIn == isIn) sum += entry.litres;
    }
    return sum;
}

double Account::total(bool isIn, AccountKind kind) const {
    double sum = 0;
    for (const AccountEntry& entry : entries) {
        if (entry.isIn == isIn && entry.kind == kind) sum += entry.litres;
    }
    return sum;
}

Account accountOf(const Recorded& recorded, const ComponentSums& sums, const WaterPaths& paths,
                  const Balance& balance) {
    Bookkeeper books(recorded);
    addOwn(recorded, sums, paths, books);
    for (const Movement& movement : paths.movements()) {
        const bool isIn = movement.from == kOutside;
        if (isIn || movement.to == kOutside) {
            books.add(isIn, kindOf(movement.border), isIn ? movement.to : movement.from, movement.litres,
                      movement.place);
        } else {
            books.pass(false, movement.from, movement.litres);
            books.pass(true, movement.to, movement.litres);
        }
    }
    for (const Creation& creation : paths.creations()) {
        books.addEither(true, AccountKind::created, AccountKind::destroyed, creation.component, creation.litres,
                        creation.reason);
    }
    Account account;
    account.model = &recorded.model();
    books.close(balance, account);
    for (int i = 0; i < recorded.components(); ++i) {
        if (!sums.isBalanced(i) && recorded.type(i).balance.isOfWater()) {
            account.notRecorded.emplace_back(i, sums.of(i).notBalanced);
        }
    }
    return account;
}

}  // namespace kesto
