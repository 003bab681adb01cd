#include <algorithm>
#include <cmath>
#include <numeric>

#include "balance_steps.h"
#include "month_terms.h"
#include "overview_parts.h"
#include "path_nodes.h"

namespace kesto {

namespace {

constexpr double kNear = 0.01;           // of a volume that is compared
constexpr double kRounding = 1e-9;       // of a sum
constexpr std::size_t kFew = 12;         // sources that are looked at one by one
constexpr std::size_t kMostSources = 5;  // that have a colour each

double totalOf(const Months& months) {
    return std::accumulate(months.begin(), months.end(), 0.0);
}

bool isFinite(const Months& months) {
    return std::all_of(months.begin(), months.end(), [](double value) { return std::isfinite(value); });
}

struct Source {
    int component;
    Months served;
};

class MonthRows {
  public:
    MonthRows(const Recorded& recorded, const Results& results, const Multiplicity& multiplicity,
              const ComponentSums& sums, const WaterPaths& paths, const Account& account, Overview& overview)
        : recorded_(recorded),
          results_(results),
          multiplicity_(multiplicity),
          paths_(paths),
          account_(account),
          overview_(overview),
          terms_(recorded, multiplicity, sums, overview.months) {}

    void add() {
        const std::vector<double> daily = paths_.mains();
        const Months mains = sumOfSteps(overview_.months, [&](std::size_t step) { return daily[step]; });
        findSources();
        auto use = terms_.of(Term::released);
        if (const auto used = terms_.of(Term::used); use && used) {
            kesto::add(*use, *used);
            if (isFinite(*use) && totalOf(*use) > 0) overview_.use = totalOf(*use);
        }
        if (overview_.use && isFinite(mains)) addSupply(*use, mains);
        addOfAccount("Rain", true, AccountKind::rain, terms_.of(Term::rain));
        addOfAccount("Drawn from the ground and rivers", true, AccountKind::drawn, terms_.of(Term::drawn));
        addOfAccount("Mains", true, AccountKind::mains, mains);
        addYear("Used", use);
        addServed();
        addOfAccount("To water bodies", false, AccountKind::waterBody, toWaterBodies());
        addOfAccount("Evaporated", false, AccountKind::evaporated, terms_.of(Term::evaporated));
        addOfAccount("Infiltrated", false, AccountKind::infiltrated, terms_.of(Term::infiltrated));
        addOfAccount("Lost", false, AccountKind::lost, terms_.of(Term::lost));
        addYear("Energy", energy(), "kWh");
        addDaysShort();
    }

  private:
    void addYear(const std::string& label, const std::optional<Months>& months, std::string_view unit = "L") {
        if (!months || !isFinite(*months)) return;
        const bool isNothing = std::all_of(months->begin(), months->end(), [](double value) { return value == 0; });
        if (!isNothing) overview_.years.push_back({label, {}, unit, byYear(overview_.months, *months)});
    }

    // Where some of it lies in the wiring alone, and so has no months, the years would not be those of the account.
    void addOfAccount(const std::string& label, bool isIn, AccountKind kind, const std::optional<Months>& months) {
        const double whole = account_.total(isIn, kind);
        if (months && std::abs(totalOf(*months) - whole) <= kRounding * std::abs(whole)) addYear(label, months);
    }

    void findSources() {
        for (int i = 0; i < recorded_.components(); ++i) {
            if (!has(recorded_.type(i), FigureOf::service)) continue;
            auto served = terms_.demand(i);
            const auto unmet = terms_.unmet(i);
            if (!served || !unmet) {
                areSourcesKnown_ = false;
                continue;
            }
            for (std::size_t month = 0; month < served->size(); ++month) {
                (*served)[month] -= (*unmet)[month];
            }
            if (served_.empty()) served_.assign(served->size(), 0);
            kesto::add(served_, *served);
            sources_.push_back({i, std::move(*served)});
            if (sources_.size() > kFew) sources_.pop_back();
            ++sourceCount_;
            lastSource_ = i;
        }
    }

    // One colour for each source where all that the mains did not give came from them, and none from one by way of
    // another.
    void addSupply(const Months& use, const Months& mains) {
        const double others = totalOf(use) - totalOf(mains);
        const auto row = [&](std::string label, std::string_view kind, Months values) {
            if (totalOf(values) > 0) overview_.supply.push_back({std::move(label), kind, "L", std::move(values)});
        };
        if (others < -kNear * totalOf(use)) return;  // not all of the mains water was for users
        row("Mains", "mains", mains);
        if (others <= kNoticed * totalOf(use)) return;
        const bool areAll =
            areSourcesKnown_ && !served_.empty() && std::abs(totalOf(served_) - others) <= kNear * others;
        if (areAll && sourceCount_ <= kMostSources) {
            for (Source& source : sources_) {
                const bool isStore = recorded_.type(source.component).balance.stored != Stored::nothing;
                row(recorded_.component(source.component).name, isStore ? "store" : "source", source.served);
            }
            return;
        }
        Months rest = use;
        for (std::size_t month = 0; month < rest.size(); ++month) {
            rest[month] = std::max(0.0, rest[month] - mains[month]);
        }
        const bool isOneType = areAll && std::all_of(sources_.begin(), sources_.end(), [&](const Source& source) {
                                   return &recorded_.type(source.component) == &recorded_.type(lastSource_);
                               });
        row(isOneType ? pluralOf(recorded_.type(lastSource_)) : "Other sources", isOneType ? "store" : "other", rest);
    }

    void addServed() {
        if (!areSourcesKnown_ || served_.empty()) return;
        const std::string of = sourceCount_ == 1 ? recorded_.component(lastSource_).name : "stores and sources";
        addYear("Served by " + of, served_);
    }

    std::optional<Months> toWaterBodies() {
        Months sums(overview_.months.count(), 0);
        for (int i = 0; i < recorded_.components(); ++i) {
            if (recorded_.component(i).code != code::kWaterBody) continue;
            for (const int index : recorded_.inputs(i)) {
                const Connection& connection = recorded_.connection(index);
                if (recorded_.carriers().ofOutput(connection.from, connection.fromPort) != Carries::water) continue;
                if (!recorded_.signals(connection.from, connection.fromPort)) return std::nullopt;
                kesto::add(sums, monthsOf(recorded_, overview_.months, connection.from, connection.fromPort,
                                          multiplicity_.of(connection.from)));
            }
        }
        return sums;
    }

    Months energy() const {
        const std::vector<BookedEnergy> groups = energyOfGroups(recorded_.model());
        Months sums(overview_.months.count(), 0);
        for (const PotentialSeries& series : results_.potentials) {
            const bool isHeat = groups[at(recorded_.model().findGroup(series.group))].isHeat();
            if (series.potential != kEnergy || isHeat) continue;
            kesto::add(sums, sumOfSteps(overview_.months,
                                        [&](std::size_t step) { return static_cast<double>(series.values[step]); }));
        }
        return sums;
    }

    // On which one of a few sources could not serve all that it was asked for.
    void addDaysShort() {
        if (!areSourcesKnown_ || sourceCount_ == 0 || sourceCount_ > kFew) return;
        std::vector<bool> isShort(recorded_.steps(), false);
        for (const Source& source : sources_) {
            const Service& service = recorded_.type(source.component).service;
            BalanceSteps steps(recorded_, source.component, recorded_.inputs(source.component));
            for (std::size_t step = 0; step < recorded_.steps(); ++step) {
                const BalanceStep& now = steps.next();
                const double wanted = now.in[at(service.demandPort) - 1];
                if (service.unmet(now) > kNoticed * wanted) isShort[step] = true;
            }
        }
        const std::string of = sourceCount_ == 1 ? recorded_.component(lastSource_).name : "a store or source";
        const bool isDaily = recorded_.model().simulation.timeStep == 1;
        addYear((isDaily ? "Days on which " : "Steps on which ") + of + " fell short",
                sumOfSteps(overview_.months, [&](std::size_t step) { return isShort[step] ? 1.0 : 0.0; }),
                isDaily ? "d" : "steps");
    }

    const Recorded& recorded_;
    const Results& results_;
    const Multiplicity& multiplicity_;
    const WaterPaths& paths_;
    const Account& account_;
    Overview& overview_;
    MonthTerms terms_;
    std::vector<Source> sources_;  // the first
    std::size_t sourceCount_ = 0;
    int lastSource_ = kOutside;
    bool areSourcesKnown_ = true;
    Months served_;  // by all
};

}  // namespace

void addMonths(const Recorded& recorded, const Results& results, const Multiplicity& multiplicity,
               const ComponentSums& sums, const WaterPaths& paths, const Account& account, Overview& overview) {
    MonthRows(recorded, results, multiplicity, sums, paths, account, overview).add();
}

}  // namespace kesto
