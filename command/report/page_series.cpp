#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>

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

class SeriesData {
  public:
    SeriesData(const PageSource& source, const Json& summary)
        : source_(source), stored_(source.folder, source.stored.files) {
        const auto flows = summary.find("flows");
        if (flows == summary.end()) return;
        for (const Json& flow : *flows) {
            carries_[flow["name"].get<std::string>()] = flow["carries"].get<std::string>();
        }
    }

    Json take() {
        if (stored_.days().empty()) return {};
        months_ = monthsOf(stored_.days().front(), stored_.days().size());
        const std::vector<std::size_t> wanted = choice();
        Json list = Json::array();
        // Some turn out to hold nothing, and others take their place.
        for (std::size_t next = 0; list.size() < kShown && next < wanted.size();) {
            const std::size_t end = std::min(next + kShown - list.size(), wanted.size());
            const std::vector<std::size_t> now(wanted.begin() + static_cast<std::ptrdiff_t>(next),
                                               wanted.begin() + static_cast<std::ptrdiff_t>(end));
            const auto values = stored_.valuesOf(now);
            for (std::size_t i = 0; i < now.size(); ++i) {
                if (!values[i].empty()) list.push_back(rowOf(stored_.entries()[now[i]], values[i]));
            }
            next = end;
        }
        return {{"first", toText(stored_.days().front())},
                {"step_days", 1},
                {"count", stored_.days().size()},
                {"list", std::move(list)}};
    }

  private:
    std::vector<std::size_t> choice() const {
        std::vector<std::size_t> chosen(stored_.entries().size());
        std::iota(chosen.begin(), chosen.end(), 0U);
        return chosen;
    }

    Json rowOf(const SeriesEntry& entry, const std::vector<float>& given) const {
        const bool isQuality = entry.quantity == Quantity::quality || entry.quantity == Quantity::storeQuality;
        std::vector<float> values = given;
        constexpr float kAbsent = -1.0F;  // a signal without quality
        if (isQuality) std::replace(values.begin(), values.end(), kAbsent, std::numeric_limits<float>::quiet_NaN());
        Json row{{"name", entry.name()}};
        const std::string of = entry.of.substr(0, entry.of.find(':'));
        if (entry.quantity == Quantity::potential) {
            row["of"] = "group:" + entry.of.substr(0, entry.of.rfind(':'));
        } else if (const int index = source_.model ? source_.model->findComponent(of) : -1; index >= 0) {
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
        return row;
    }

    const PageSource& source_;
    StoredSeries stored_;
    std::map<std::string, std::string, std::less<>> carries_;
    std::vector<std::uint8_t> months_;  // of each day
};

}  // namespace

Json seriesOf(const PageSource& source, const Json& summary, const Json&) {
    return SeriesData(source, summary).take();
}

}  // namespace kesto
