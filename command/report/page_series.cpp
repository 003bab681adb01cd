#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>

#include "page_parts.h"
#include "stored_series.h"

namespace kesto {

namespace {

constexpr std::size_t kPageBytes = 4'500'000;  // of the data; with scripts and pictures less than 5 MB
constexpr std::size_t kLeastBytes = 500'000;   // for days, whatever else the page holds
constexpr std::size_t kShown = 50;             // series by day, unless others are asked for

// Sums of flows and of what groups book, means of states and qualities.
bool addsUp(Quantity quantity) {
    return quantity == Quantity::flow || quantity == Quantity::potential;
}

struct OfMonths {
    std::vector<float> values;
    std::vector<std::size_t> days;  // that have a value
    bool isWhole = true;            // all days have
};

// Of each month of the run. A day without a value is a gap of its month's mean, not of its sum.
OfMonths byMonth(const std::vector<float>& values, const std::vector<std::uint8_t>& months, bool isSum) {
    OfMonths result;
    for (std::size_t first = 0; first < values.size();) {
        double sum = 0;
        std::size_t count = 0, day = first;
        for (; day < values.size() && months[day] == months[first]; ++day) {
            if (!std::isfinite(values[day])) continue;
            sum += static_cast<double>(values[day]);
            ++count;
        }
        const double value = isSum ? sum : sum / static_cast<double>(count);
        result.values.push_back(count > 0 ? static_cast<float>(value) : std::numeric_limits<float>::quiet_NaN());
        result.days.push_back(count);
        if (count < day - first) result.isWhole = false;
        first = day;
    }
    return result;
}

bool isQuality(Quantity quantity) {
    return quantity == Quantity::quality || quantity == Quantity::storeQuality;
}

class SeriesData {
  public:
    SeriesData(const PageSource& source, const Json& summary, const Json& overview)
        : source_(source), overview_(overview), stored_(source.folder, source.stored.files) {
        if (const auto flows = summary.find("flows"); flows != summary.end()) {
            for (const Json& flow : *flows) {
                carries_[flow.at("name").get<std::string>()] = flow.at("carries").get<std::string>();
            }
        }
        for (const Json& row : overview.value("shown", Json::array())) {
            if (row.value("first", false)) first_.insert(row.at("name").get<std::string>());
        }
        const auto& entries = stored_.entries();
        for (std::size_t i = 0; i < entries.size(); ++i) {
            byName_.emplace(std::pair(isQuality(entries[i].quantity), entries[i].name()), i);
        }
    }

    void addTo(Json& page) {
        if (stored_.days().empty()) return;
        Json list = Json::array();
        for (const Json& sum : overview_.value("sums", Json::array())) {
            list.push_back(rowOfSum(sum));
        }
        months_ = monthsOf(stored_.days().front(), stored_.days().size());
        const std::size_t shown = addDays(page, list);
        Json series{{"first", toText(stored_.days().front())}, {"step_days", 1}, {"count", stored_.days().size()}};
        series["list"] = std::move(list);
        const std::size_t all = overview_.value("series", std::size_t{0});
        if (all > shown) {
            series["omitted"] = all - shown;
            series["omitted_note"] = "kesto report --series LIST has others by day";
        }
        page["series"] = std::move(series);
    }

  private:
    // Reads what is wanted, and the levels of the stores, in one go. Gives how many series are shown, without
    // qualities.
    std::size_t addDays(Json& page, Json& list) {
        const std::size_t used = page.dump(-1, ' ', false, Json::error_handler_t::replace).size();
        bytes_ = std::max(kLeastBytes, kPageBytes - std::min(kPageBytes, used));
        const std::vector<std::size_t> wanted = choice(), stores = entriesOfStores(page);
        const std::size_t most = source_.shown.empty() ? kShown : wanted.size();
        const std::size_t sums = list.size();
        std::size_t shown = 0, next = 0;
        // Others take the place of those that hold nothing.
        do {
            const std::size_t end = std::min(next + most - (list.size() - sums), wanted.size());
            std::vector<std::size_t> now(wanted.begin() + static_cast<std::ptrdiff_t>(next),
                                         wanted.begin() + static_cast<std::ptrdiff_t>(end));
            if (next == 0) now.insert(now.end(), stores.begin(), stores.end());
            const auto values = stored_.valuesOf(now);
            if (next == 0) addStores(page, {values.end() - static_cast<std::ptrdiff_t>(stores.size()), values.end()});
            for (std::size_t i = 0; i < end - next; ++i) {
                if (values[i].empty()) continue;
                list.push_back(rowOf(stored_.entries()[now[i]], values[i]));
                if (!isQuality(stored_.entries()[now[i]].quantity)) ++shown;
            }
            next = end;
        } while (list.size() - sums < most && next < wanted.size());
        return shown;
    }

    void addStores(Json& page, const std::vector<std::vector<float>>& values) {
        const std::size_t half = bytes_ / 2;
        for (std::size_t i = 0; i < values.size() && bytes_ > half; ++i) {
            addPacked(page.at("stores").at("list").at(i), values[i]);
        }
    }

    // Of a run of a century only a few have their days.
    void addPacked(Json& row, const std::vector<float>& days) {
        std::string text = packed(days);
        if (source_.shown.empty() && text.size() > bytes_) return;
        bytes_ -= std::min(bytes_, text.size());
        row["days"] = std::move(text);
    }

    std::vector<std::size_t> entriesOfStores(const Json& page) const {
        std::vector<std::size_t> entries;
        if (!page.contains("stores")) return entries;
        for (const Json& store : page.at("stores").at("list")) {
            const auto found = byName_.find({false, store.at("name").get<std::string>() + ":storage"});
            if (found == byName_.end()) return {};  // of a file that somebody else has written
            entries.push_back(found->second);
        }
        return entries;
    }

    // Those that were asked for; or those that matter, then qualities.
    std::vector<std::size_t> choice() const {
        std::vector<std::size_t> chosen;
        const auto& entries = stored_.entries();
        if (!source_.shown.empty()) {
            expectKnown();
            for (std::size_t i = 0; i < entries.size(); ++i) {
                if (isAsked(entries[i])) chosen.push_back(i);
            }
            return chosen;
        }
        for (const Json& row : overview_.value("shown", Json::array())) {
            const auto found = byName_.find({false, row.at("name").get<std::string>()});
            if (found != byName_.end()) chosen.push_back(found->second);
        }
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (isQuality(entries[i].quantity) || !overview_.contains("shown")) chosen.push_back(i);
        }
        return chosen;
    }

    // As of --record: "all", or names of series, or of components, which stand for all of theirs.
    static bool isMeant(const SeriesEntry& entry, const std::string& asked) {
        return asked == "all" || asked == entry.of || asked == entry.name() ||
               asked == entry.of.substr(0, entry.of.find(':'));
    }

    bool isAsked(const SeriesEntry& entry) const {
        return std::any_of(source_.shown.begin(), source_.shown.end(),
                           [&](const std::string& asked) { return isMeant(entry, asked); });
    }

    void expectKnown() const {
        const auto& entries = stored_.entries();
        for (const std::string& asked : source_.shown) {
            const bool isKnown = std::any_of(entries.begin(), entries.end(),
                                             [&](const SeriesEntry& entry) { return isMeant(entry, asked); });
            if (isKnown) continue;
            throw std::runtime_error(fmt::format(
                "--series {}: the results hold no series of this name; expected all, a component, or a name such as {}",
                asked, entries.empty() ? "tank:overflow" : entries.front().name()));
        }
    }

    Json rowOf(const SeriesEntry& entry, const std::vector<float>& given) {
        std::vector<float> values = given;
        constexpr float kAbsent = -1.0F;  // a signal without quality
        if (isQuality(entry.quantity))
            std::replace(values.begin(), values.end(), kAbsent, std::numeric_limits<float>::quiet_NaN());
        Json row{{"name", entry.name()}};
        if (entry.quantity == Quantity::potential) {
            row["of"] = "group:" + entry.of.substr(0, entry.of.rfind(':'));
        } else if (const int index = source_.model ? componentOf(entry) : -1; index >= 0) {
            row["of"] = index;
        }
        row["quantity"] = toText(entry.quantity);
        const auto carries = carries_.find(entry.of);
        if (entry.quantity == Quantity::flow && carries != carries_.end() && carries->second != "either") {
            row["carries"] = carries->second;
        }
        row["unit"] = entry.unit;
        row["sum"] = addsUp(entry.quantity);
        const OfMonths byMonths = byMonth(values, months_, addsUp(entry.quantity));
        row["months"] = packed(byMonths.values);
        if (!byMonths.isWhole && !addsUp(entry.quantity)) row["month_days"] = byMonths.days;
        addPacked(row, values);
        if (!isQuality(entry.quantity) && first_.contains(entry.name())) row["first_shown"] = true;
        return row;
    }

    int componentOf(const SeriesEntry& entry) const {
        return source_.model->findComponent(entry.of.substr(0, entry.of.find(':')));
    }

    static Json rowOfSum(const Json& sum) {
        const std::string type = "type:" + sum.at("type").get<std::string>();
        const std::string of =
            sum.contains("group") ? "group:" + sum.at("group").get<std::string>() + " " + type : type;
        const std::string output = sum.at("output").get<std::string>();
        Json row{{"name", of + ":" + (output.empty() ? "storage" : output)},
                 {"of", of},
                 {"quantity", output.empty() ? "storage" : "flow"}};
        if (const std::string carries = sum.value("carries", ""); !carries.empty() && carries != "either") {
            row["carries"] = carries;
        }
        row["unit"] = sum.at("unit");
        row["sum"] = !output.empty();
        std::vector<float> months;
        for (const Json& value : sum.at("months")) {
            months.push_back(value.is_number() ? value.get<float>() : std::numeric_limits<float>::quiet_NaN());
        }
        row["months"] = packed(months);
        return row;
    }

    const PageSource& source_;
    const Json& overview_;
    StoredSeries stored_;
    std::map<std::string, std::string, std::less<>> carries_;
    std::set<std::string> first_;
    std::map<std::pair<bool, std::string>, std::size_t> byName_;  // entries, qualities apart
    std::vector<std::uint8_t> months_;                            // of each day
    std::size_t bytes_ = 0;                                       // that are left for days
};

}  // namespace

void addSeries(const PageSource& source, const Json& summary, const Json& overview, Json& page) {
    SeriesData(source, summary, overview).addTo(page);
}

}  // namespace kesto
