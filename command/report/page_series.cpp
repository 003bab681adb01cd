#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "page_parts.h"
#include "stored_series.h"

namespace kesto {

namespace {

constexpr std::size_t kShown = 50;  // series by day, unless others are asked for

// Sums of flows and of what groups book, means of states and qualities.
bool addsUp(Quantity quantity) {
    return quantity == Quantity::flow || quantity == Quantity::potential;
}

// Of each month of the run. A day without a value is a gap of its month's mean, not of its sum.
std::vector<float> byMonth(const std::vector<float>& values, const std::vector<std::uint8_t>& months, bool isSum) {
    std::vector<float> result;
    for (std::size_t first = 0; first < values.size();) {
        double sum = 0;
        std::size_t count = 0, day = first;
        for (; day < values.size() && months[day] == months[first]; ++day) {
            if (!std::isfinite(values[day])) continue;
            sum += static_cast<double>(values[day]);
            ++count;
        }
        const double value = isSum ? sum : sum / static_cast<double>(count);
        result.push_back(count > 0 ? static_cast<float>(value) : std::numeric_limits<float>::quiet_NaN());
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
        for (const Json& flow : summary.value("flows", Json::array())) {
            carries_[flow["name"].get<std::string>()] = flow["carries"].get<std::string>();
        }
        for (const Json& row : overview.value("shown", Json::array())) {
            if (row.value("first", false)) first_.insert(row["name"].get<std::string>());
        }
        const auto& entries = stored_.entries();
        for (std::size_t i = 0; i < entries.size(); ++i) {
            byName_.emplace(std::pair(isQuality(entries[i].quantity), entries[i].name()), i);
        }
    }

    void addTo(Json& page) {
        if (stored_.days().empty() && !overview_.contains("sums")) return;
        Json list = Json::array();
        for (const Json& sum : overview_.value("sums", Json::array())) {
            list.push_back(rowOfSum(sum));
        }
        std::size_t shown = 0;
        if (!stored_.days().empty()) {
            months_ = monthsOf(stored_.days().front(), stored_.days().size());
            shown = addDays(page, list);
        }
        Json series{{"first", page.value("start", "")}, {"step_days", 1}, {"count", stored_.days().size()}};
        if (!stored_.days().empty()) series["first"] = toText(stored_.days().front());
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
        const std::vector<std::size_t> stores = entriesOfStores(page);
        std::vector<std::size_t> wanted = choice();
        const std::size_t most = source_.shown.empty() ? kShown : wanted.size();
        const auto begin = std::min(most, wanted.size());
        std::vector<std::size_t> now(wanted.begin(), wanted.begin() + static_cast<std::ptrdiff_t>(begin));
        now.insert(now.end(), stores.begin(), stores.end());
        auto values = stored_.valuesOf(now);
        std::size_t rows = 0, shown = 0;
        const auto take = [&](std::size_t entry, const std::vector<float>& days) {
            if (days.empty()) return;  // nothing was written
            list.push_back(rowOf(stored_.entries()[entry], days));
            ++rows;
            if (!isQuality(stored_.entries()[entry].quantity)) ++shown;
        };
        for (std::size_t i = 0; i < begin; ++i) {
            take(wanted[i], values[i]);
        }
        for (std::size_t i = 0; i < stores.size(); ++i) {
            page["stores"]["list"][i]["days"] = packed(values[begin + i]);
        }
        // Others take the place of those that hold nothing.
        for (std::size_t next = begin; rows < most && next < wanted.size();) {
            const std::size_t end = std::min(next + most - rows, wanted.size());
            now.assign(wanted.begin() + static_cast<std::ptrdiff_t>(next),
                       wanted.begin() + static_cast<std::ptrdiff_t>(end));
            values = stored_.valuesOf(now);
            for (std::size_t i = 0; i < now.size(); ++i) {
                take(now[i], values[i]);
            }
            next = end;
        }
        return shown;
    }

    std::vector<std::size_t> entriesOfStores(const Json& page) const {
        std::vector<std::size_t> entries;
        if (!page.contains("stores")) return entries;
        for (const Json& store : page["stores"]["list"]) {
            const auto found = byName_.find({false, store["name"].get<std::string>() + ":storage"});
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
            for (std::size_t i = 0; i < entries.size(); ++i) {
                if (isAsked(entries[i])) chosen.push_back(i);
            }
            return chosen;
        }
        for (const Json& row : overview_.value("shown", Json::array())) {
            const auto found = byName_.find({false, row["name"].get<std::string>()});
            if (found != byName_.end()) chosen.push_back(found->second);
        }
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (isQuality(entries[i].quantity) || !overview_.contains("shown")) chosen.push_back(i);
        }
        return chosen;
    }

    // As of --record: "all", or names of series, or of components, which stand for all of theirs.
    bool isAsked(const SeriesEntry& entry) const {
        const auto is = [&](const std::string& asked) {
            return asked == "all" || asked == entry.of || asked == entry.name() ||
                   asked == entry.of.substr(0, entry.of.find(':'));
        };
        return std::any_of(source_.shown.begin(), source_.shown.end(), is);
    }

    Json rowOf(const SeriesEntry& entry, const std::vector<float>& given) const {
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
        row["months"] = packed(byMonth(values, months_, addsUp(entry.quantity)));
        row["days"] = packed(values);
        if (!isQuality(entry.quantity) && first_.contains(entry.name())) row["first_shown"] = true;
        return row;
    }

    int componentOf(const SeriesEntry& entry) const {
        return source_.model->findComponent(entry.of.substr(0, entry.of.find(':')));
    }

    static Json rowOfSum(const Json& sum) {
        const std::string type = "type:" + sum["type"].get<std::string>();
        const std::string of = sum.contains("group") ? "group:" + sum["group"].get<std::string>() + " " + type : type;
        const std::string output = sum["output"].get<std::string>();
        Json row{{"name", of + ":" + (output.empty() ? "storage" : output)},
                 {"of", of},
                 {"quantity", output.empty() ? "storage" : "flow"}};
        if (const std::string carries = sum.value("carries", ""); !carries.empty() && carries != "either") {
            row["carries"] = carries;
        }
        row["unit"] = sum["unit"];
        row["sum"] = !output.empty();
        std::vector<float> months;
        for (const Json& value : sum["months"]) {
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
};

}  // namespace

void addSeries(const PageSource& source, const Json& summary, const Json& overview, Json& page) {
    SeriesData(source, summary, overview).addTo(page);
}

}  // namespace kesto
