#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "calendar.h"
#include "display.h"
#include "page_parts.h"
#include "shown_unit.h"

namespace kesto {

namespace {

constexpr double kLeastYears = 0.95;  // of which the amounts of a year are told; shorter runs have sums
constexpr std::size_t kMostCards = 9;

// The key figures, in the order of their importance.
class Cards {
  public:
    Cards(const Json& summary, const Json& overview) : summary_(summary), overview_(overview) {
        const auto figures = summary.find("figures");
        if (figures == summary.end()) return;
        for (const Json& row : *figures) {
            if (row.at("value").is_number()) figures_.emplace(row.at("name").get<std::string>(), &row);
        }
        isDaily_ = summary.value("days_per_step", 1.0) == 1;
        years_ = summary.value("steps_run", 0.0) / kDaysPerYear;
    }

    Json take() {
        addUse();
        addSaving();
        addReliability();
        addShortage();
        addOverflow();
        addMoney();
        addEnergy();
        addUnexplained();
        if (cards_.size() > kMostCards) cards_.erase(cards_.begin() + kMostCards, cards_.end());
        return std::move(cards_);
    }

  private:
    std::optional<double> figure(const std::string& name) const {
        const auto found = figures_.find(name);
        return found == figures_.end() ? std::nullopt : std::optional(found->second->at("value").get<double>());
    }

    std::optional<double> total(const char* name) const {
        const auto found = overview_.find(name);
        return found == overview_.end() || !found->is_number() ? std::nullopt : std::optional(found->get<double>());
    }

    void add(Json card) { cards_.push_back(std::move(card)); }

    // The calendar moves one day a step: of longer steps its years are none.
    bool hasYear() const { return isDaily_ && years_ >= kLeastYears; }
    std::string_view step() const { return isDaily_ ? "day" : "step"; }
    double perYear(double litres) const { return hasYear() ? litres / years_ : litres; }
    // "24.8 m³ a year"
    std::string aYear(double amount, std::string_view unit) const {
        return readable(perYear(amount), unit) + (hasYear() ? " a year" : "");
    }

    // In the unit that suits its size, as in the summary of the terminal.
    static std::string readable(double value, std::string_view unit) {
        std::string text = grouped(shown(value, unit));
        if (text.ends_with(" m3")) text.replace(text.size() - 1, 1, "\u00b3");
        return text;
    }

    // "2,476.24 EUR"
    static std::string grouped(std::string text) {
        const std::size_t first = text.starts_with('-') ? 1 : 0, end = text.find_first_not_of("0123456789", first);
        for (std::size_t at = std::min(end, text.size()); at > first + 3; at -= 3)
            text.insert(at - 3, ",");
        return text;
    }

    static std::string personsText(double number) {
        const bool isWhole = number == std::round(number) || number >= 100;
        return isWhole ? withThousands(static_cast<std::size_t>(std::lround(number))) : fmt::format("{:.3g}", number);
    }

    // "28 July to 11 October 2012"
    static std::string period(const std::string& from, const std::string& to) {
        constexpr std::array<std::string_view, 12> kMonths{"January",   "February", "March",    "April",
                                                           "May",       "June",     "July",     "August",
                                                           "September", "October",  "November", "December"};
        const auto first = parseDay(from), last = parseDay(to);
        if (!first || !last) return {};
        const CivilDate a = dateOf(*first), b = dateOf(*last);
        const auto nameOf = [&](const CivilDate& date) { return kMonths[static_cast<std::size_t>(date.month) - 1]; };
        const std::string end = fmt::format("{} {} {}", b.day, nameOf(b), b.year);
        if (*first == *last) return end;
        if (a.year != b.year) return fmt::format("{} {} {} to {}", a.day, nameOf(a), a.year, end);
        if (a.month != b.month) return fmt::format("{} {} to {}", a.day, nameOf(a), end);
        return fmt::format("{} to {}", a.day, end);
    }

    void addUse() {
        const auto use = total("use"), persons = total("persons");
        const double days = years_ * kDaysPerYear;
        if (!use || *use <= 0 || days <= 0) return;
        if (persons && *persons > 0) {
            add({{"id", "use"},
                 {"label", "Water use"},
                 {"value", *use / days / *persons},
                 {"unit", fmt::format("L per person and {}", step())},
                 {"digits", 1},
                 {"note",
                  fmt::format("{} a {} for {} persons", readable(*use / days, "L"), step(), personsText(*persons))}});
        } else {
            add({{"id", "use"},
                 {"label", "Water use"},
                 {"value", perYear(*use)},
                 {"unit", "L"},
                 {"note", hasYear() ? "a year" : "in all"}});
        }
    }

    void addSaving() {
        const auto saved = figure("network.saved_mains"), mains = figure("network.mains"), use = total("use");
        if (saved && mains && *saved + *mains > 0) {
            return add({{"id", "saved"},
                        {"label", "Mains water saved"},
                        {"value", 100 * *saved / (*saved + *mains)},
                        {"unit", "%"},
                        {"digits", 1},
                        {"note", aYear(*saved, "L") + " less than the baseline"}});
        }
        if (!use || !mains || *use <= 0 || *mains > *use) return;
        add({{"id", "other_sources"},
             {"label", "Use met without mains water"},
             {"value", 100 * (1 - *mains / *use)},
             {"unit", "%"},
             {"digits", 1},
             {"note", aYear(*use - *mains, "L")}});
    }

    void addReliability() {
        const auto service = overview_.find("service");
        if (service == overview_.end()) return;
        const double demand = service->value("demand", 0.0), served = service->value("served", 0.0);
        if (demand <= 0) return;
        Json card{{"id", "reliability"},
                  {"label", "Demand served"},
                  {"value", 100 * served / demand},
                  {"unit", "%"},
                  {"digits", 1},
                  {"name", service->value("label", "")}};
        if (service->contains("days_in_full")) {
            card["note"] = fmt::format("by {}, in full on {:.1f} % of the {}s with a demand",
                                       service->value("label", ""), 100 * service->value("days_in_full", 0.0), step());
        }
        add(std::move(card));
    }

    void addShortage() {
        constexpr std::string_view kEnding = ".longest_shortage";
        const Json* longest = nullptr;
        for (const auto& [name, row] : figures_) {
            if (!name.ends_with(kEnding)) continue;
            if (!longest || row->at("value").get<double>() > longest->at("value").get<double>()) longest = row;
        }
        if (!longest) return;
        Json card{{"id", "shortage"}, {"label", "Longest shortage"}, {"value", longest->at("value")}};
        const std::string figure = longest->at("name").get<std::string>();
        const std::string name = figure.substr(0, figure.size() - kEnding.size());
        card["unit"] = isDaily_ ? "d" : "steps";
        if (longest->at("value").get<double>() > 0) {
            card["from"] = longest->at("from");
            card["to"] = longest->at("to");
            card["name"] = name;
            card["note"] =
                fmt::format("{}, {}", name, period(card["from"].get<std::string>(), card["to"].get<std::string>()));
        }
        add(std::move(card));
    }

    void addOverflow() {
        const auto overflow = overview_.find("overflow");
        if (overflow == overview_.end()) return;
        const double litres = overflow->value("litres", 0.0), inflow = overflow->value("inflow", 0.0);
        if (inflow <= 0) return;
        add({{"id", "overflow"},
             {"label", "Overflow"},
             {"value", 100 * litres / inflow},
             {"unit", "% of the inflow"},
             {"digits", 1},
             {"name", overflow->value("label", "")},
             {"note", fmt::format("{}, from {}", aYear(litres, "L"), overflow->value("label", ""))}});
    }

    std::string currency() const {
        const auto found = figures_.find("network.yearly_cost");
        if (found == figures_.end()) return {};
        const std::string unit = found->second->at("unit").get<std::string>();
        return unit.substr(0, unit.rfind('/'));  // it may hold a slash of its own
    }

    void addMoney() {
        const auto yearly = figure("network.yearly_cost"), use = total("use"), mains = figure("network.mains");
        const bool isMainsPriced = !mains || *mains == 0 || figure("network.mains_cost");
        if (yearly && isMainsPriced && use && *use > 0) {
            add({{"id", "cost"},
                 {"label", "Cost of the water used"},
                 {"value", *yearly / (*use / years_ / 1000)},
                 {"unit", currency() + "/m³"},
                 {"digits", 2},
                 {"note", grouped(fmt::format("{:.2f} {} a year", *yearly, currency()))}});
        }
        if (const auto saved = figure("network.cost_per_m3_saved")) {
            add({{"id", "cost_saved"},
                 {"label", "Cost of mains water saved"},
                 {"value", *saved},
                 {"unit", currency() + "/m³"},
                 {"digits", 2},
                 {"note", "against the baseline"}});
        }
    }

    void addEnergy() {
        const auto energy = figure("network.energy"), use = total("use");
        if (!energy || !use || *use <= 0) return;
        add({{"id", "energy"},
             {"label", *energy < 0 ? "Energy yielded" : "Energy"},
             {"value", std::abs(*energy) / (*use / 1000)},
             {"unit", "kWh per m³ used"},
             {"digits", 2},
             {"note", aYear(std::abs(*energy), "kWh")}});
    }

    void addUnexplained() {
        double litres = 0, total = 0;
        const auto account = summary_.find("account");
        if (account == summary_.end() || account->empty()) return;
        for (const Json& row : *account) {
            if (!row.at("litres").is_number()) return;
            if (row.at("kind") == "unexplained") litres += row.at("litres").get<double>();
            if (row.at("side") == "in") total += row.at("litres").get<double>();
        }
        add({{"id", "unexplained"}, {"label", "Unexplained water"}, {"value", litres}, {"unit", "L"}});
        cards_.back()["note"] =
            litres == 0 ? "the account closes" : fmt::format("{:.2g} % of what came in", 100 * litres / total);
    }

    const Json& summary_;
    const Json& overview_;
    std::map<std::string, const Json*, std::less<>> figures_;
    bool isDaily_ = true;
    double years_ = 0;  // of the calendar
    Json cards_ = Json::array();
};

}  // namespace

Json cardsOf(const Json& summary, const Json& overview) {
    return Cards(summary, overview).take();
}

}  // namespace kesto
