#include "figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "balance_steps.h"

namespace kesto {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr std::array<std::string_view, 12> kUnmetOfMonth{"unmet_jan", "unmet_feb", "unmet_mar", "unmet_apr",
                                                         "unmet_may", "unmet_jun", "unmet_jul", "unmet_aug",
                                                         "unmet_sep", "unmet_oct", "unmet_nov", "unmet_dec"};

// The longest run of steps that were marked.
struct LongestRun {
    std::size_t length = 0, end = 0, current = 0;

    void add(std::size_t step, bool isMarked) {
        current = isMarked ? current + 1 : 0;
        if (current <= length) return;
        length = current;
        end = step;
    }
};

// The largest value and its step.
struct Peak {
    double value = kNone;
    std::size_t step = 0;

    void add(std::size_t at, double candidate) {
        if (!(candidate > value) && !std::isnan(value)) return;
        value = candidate;
        step = at;
    }
};

class Collector {
  public:
    Collector(const Recorded& recorded, const ComponentSums& sums, const Money& money, Figures& figures)
        : recorded_(recorded),
          sums_(sums),
          money_(money),
          figures_(figures),
          sourcesOfGroup_(recorded.model().groups.size()),
          months_(monthsOf(recorded.dayOf(0), recorded.steps())) {
        for (const Component& component : recorded.model().components) {
            if (component.group >= 0 && has(*component.type, FigureOf::source)) ++sourcesOfGroup_[at(component.group)];
        }
    }

    void addNetwork(const Account& account, const Peak& mains) {
        const auto in = [&](AccountKind kind) { return account.total(true, kind); };
        const auto out = [&](AccountKind kind) { return account.total(false, kind); };
        add(kOutside, "rain", in(AccountKind::rain));
        add(kOutside, "drawn", in(AccountKind::drawn));
        add(kOutside, "mains", in(AccountKind::mains));
        addPeak(kOutside, "mains_peak", mains);
        add(kOutside, "discharged", out(AccountKind::waterBody) + out(AccountKind::openEnd));
        add(kOutside, "used", out(AccountKind::used));
        add(kOutside, "evaporated", out(AccountKind::evaporated));
        add(kOutside, "infiltrated", out(AccountKind::infiltrated));
        add(kOutside, "lost", out(AccountKind::lost));
        add(kOutside, "storage_change", out(AccountKind::storage) - in(AccountKind::storage));
        add(kOutside, "created", in(AccountKind::created));
        add(kOutside, "destroyed", out(AccountKind::destroyed));
        const NetworkCosts& booked = money_.network();
        if (booked.energy.value_or(0) != 0) add(kOutside, "energy", *booked.energy);
        if (booked.heat.value_or(0) != 0) add(kOutside, "heat", *booked.heat);
    }

    void addMoney() {
        const NetworkCosts& costs = money_.network();
        const Economics& economics = recorded_.model().economics;
        const auto yearly = costs.yearly(economics.countsCapacity);
        addKnown(kOutside, "capital", costs.capital);
        addKnown(kOutside, "annuity", costs.annuity);
        addKnown(kOutside, "mains_cost", costs.mains);
        addKnown(kOutside, "sewage_cost", costs.sewage);
        addKnown(kOutside, "energy_cost", costs.energyCost);
        addKnown(kOutside, "operation_cost", costs.operation);
        addKnown(kOutside, "capacity_cost", costs.capacity);
        addKnown(kOutside, "running_cost", costs.running());
        addKnown(kOutside, "yearly_cost", yearly);
        if (yearly && economics.horizon) {
            add(kOutside, "present_cost", presentValueOf(*yearly, economics.interest, *economics.horizon));
        }
    }

    void addSavings(const NetworkCosts& before) {
        const Savings savings = savingsOf(money_.network(), before);
        add(kOutside, "saved_mains", savings.mains);
        addKnown(kOutside, "saved_energy", savings.energy);
        addKnown(kOutside, "saved_running_cost", savings.running);
        addKnown(kOutside, "cost_per_m3_saved", savings.costPerM3);
        addKnown(kOutside, "payback", savings.payback);
    }

    void addComponent(int component) {
        const Type& type = recorded_.type(component);
        if (has(type, FigureOf::service)) addService(component);
        if (has(type, FigureOf::evaporation)) addEvaporation(component);
        addCosts(component);
        if (has(type, FigureOf::peak)) addPeakOf(component);
    }

  private:
    void add(int component, std::string_view name, double value) {
        // A sum of nothing may be -0.
        figures_.rows.push_back({component, &figureInfo(name, component == kOutside), value + 0.0});
    }

    void addKnown(int component, std::string_view name, const std::optional<double>& value) {
        if (value) add(component, name, *value);
    }

    void addDated(int component, std::string_view name, double value, std::size_t first, std::size_t last) {
        figures_.rows.push_back({component, &figureInfo(name, component == kOutside), value + 0.0,
                                 recorded_.dayOf(first), recorded_.dayOf(last)});
    }

    void addPeak(int component, std::string_view name, const Peak& peak) {
        std::isnan(peak.value) ? add(component, name, kNone)
                               : addDated(component, name, peak.value, peak.step, peak.step);
    }

    void addService(int component) {
        if (!sums_.isBalanced(component)) return addUnknown(component, FigureOf::service);
        const Service& service = recorded_.type(component).service;
        BalanceSteps steps(recorded_, component, recorded_.inputs(component), 1);
        double demand = 0, unmet = 0;
        std::size_t asked = 0, shortSteps = 0;
        std::array<double, 12> byMonth{};
        LongestRun shortage;
        for (std::size_t step = 0; step < recorded_.steps(); ++step) {
            const BalanceStep& now = steps.next();
            const double wanted = now.in[at(service.demandPort) - 1], lacking = service.unmet(now);
            demand += wanted;
            unmet += lacking;
            byMonth[months_[step] - 1U] += lacking;
            const bool isShort = lacking > kNoticed * wanted;
            if (wanted > 0) ++asked;
            if (isShort) ++shortSteps;
            shortage.add(step, isShort);
        }
        add(component, "demand", demand);
        add(component, "served", demand - unmet);
        add(component, "unmet", unmet);
        add(component, "reliability_volume", demand > 0 ? 1 - unmet / demand : kNone);
        const auto share = static_cast<double>(shortSteps) / static_cast<double>(asked);
        add(component, "reliability_time", asked > 0 ? 1 - share : kNone);
        add(component, "days_short", static_cast<double>(shortSteps));
        if (shortage.length == 0) {
            add(component, "longest_shortage", 0);
        } else {
            addDated(component, "longest_shortage", static_cast<double>(shortage.length),
                     shortage.end + 1 - shortage.length, shortage.end);
        }
        for (std::size_t month = 0; month < byMonth.size(); ++month) {
            add(component, kUnmetOfMonth[month], byMonth[month]);
        }
    }

    void addEvaporation(int component) {
        if (!sums_.isBalanced(component)) return addUnknown(component, FigureOf::evaporation);
        const double booked = sums_.of(component).of(Term::evaporated);
        const double actual = booked - sums_.of(component).of(Term::takenForDelivered);
        const double years = static_cast<double>(recorded_.steps()) / kDaysPerYear;
        const double area = recorded_.component(component).size;
        add(component, "evaporation_booked", booked);
        add(component, "evaporation_actual", actual);
        add(component, "evaporation_booked_depth", booked / area / years);
        add(component, "evaporation_actual_depth", actual / area / years);
    }

    // A source's costs are those of its group, which are told apart from others' where it is the only source there.
    void addCosts(int component) {
        const auto costs = money_.of(component);
        if (costs) {
            add(component, "capital", costs->capital);
            add(component, "annuity", costs->annuity);
        }
        const int group = recorded_.component(component).group;
        if (!has(recorded_.type(component), FigureOf::source) || group < 0 || sourcesOfGroup_[at(group)] > 1) return;
        const auto yearly = money_.ofGroup(group);
        if (!yearly) return;
        const double served = figures_.find(component, "served")->value * money_.countOf(component);
        add(component, "cost_per_m3", served > 0 ? *yearly * money_.network().years * kLitresPerM3 / served : kNone);
    }

    void addPeakOf(int component) {
        const Signal* signals = recorded_.signals(component, recorded_.type(component).peakOf);
        Peak peak;
        for (std::size_t step = 0; signals && step < recorded_.steps(); ++step) {
            peak.add(step, amount(signals[step]));
        }
        addPeak(component, "peak", peak);
    }

    void addUnknown(int component, FigureOf of) {
        for (const FigureInfo& figure : allFigures()) {
            if (figure.of == of) add(component, figure.name, kNone);
        }
    }

    const Recorded& recorded_;
    const ComponentSums& sums_;
    const Money& money_;
    Figures& figures_;
    std::vector<int> sourcesOfGroup_;
    std::vector<std::uint8_t> months_;  // of each step
};

}  // namespace

std::string Figures::nameOf(const Figure& figure) const {
    constexpr char kNetwork[] = "network";
    const bool isOfNetwork = figure.component == kOutside;
    std::string of = isOfNetwork ? kNetwork : model->components[at(figure.component)].name;
    // A component of that name goes by the path that it has as a key.
    if (!isOfNetwork && of == kNetwork) of = "components." + of;
    return of + "." + std::string(figure.info->name);
}

std::string Figures::unitOf(const Figure& figure) const {
    constexpr std::string_view kMoney = "money";
    const std::string& currency = model->economics.currency;
    const std::string_view unit = figure.info->unit;
    if (currency.empty() || !unit.starts_with(kMoney)) return std::string(unit);
    return currency + std::string(unit.substr(kMoney.size()));
}

const Figure* Figures::find(int component, std::string_view name) const {
    const auto [first, last] =
        std::equal_range(rows.begin(), rows.end(), Figure{component, nullptr, 0},
                         [](const Figure& a, const Figure& b) { return a.component < b.component; });
    const auto found = std::find_if(first, last, [&](const Figure& figure) { return figure.info->name == name; });
    return found == last ? nullptr : &*found;
}

Figures figuresOf(const Recorded& recorded, const ComponentSums& sums, const WaterPaths& paths, const Account& account,
                  const Money& money, const NetworkCosts* baseline, bool hasComponents) {
    Figures figures;
    figures.model = &recorded.model();
    Peak mains;
    const std::vector<double> series = paths.mains();
    for (std::size_t step = 0; step < series.size(); ++step) {
        mains.add(step, series[step]);
    }
    Collector collector(recorded, sums, money, figures);
    collector.addNetwork(account, mains);
    collector.addMoney();
    if (baseline) collector.addSavings(*baseline);
    for (int i = 0; hasComponents && i < recorded.components(); ++i) {
        collector.addComponent(i);
    }
    return figures;
}

}  // namespace kesto
