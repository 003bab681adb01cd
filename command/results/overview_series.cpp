#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "month_terms.h"
#include "overview_parts.h"

namespace kesto {

namespace {

constexpr std::size_t kMostShown = 50;  // series by day
constexpr std::size_t kMostFirst = 4;   // that the page shows at once
constexpr std::size_t kMostUnmet = 8;
constexpr std::size_t kMostStores = 12;
constexpr std::size_t kMostAlike = 6;  // of one output of one type

// What a series means, for choosing few that tell much.
enum class Rank { unmet, store, received, flow, potential };

struct Candidate {
    std::string name;
    Rank rank;
    std::pair<const void*, int> like;  // type and port
    double variation;                  // standard deviation of the months' means
    std::vector<double> months;        // means
};

// Ports by which a type tells, or asks others for, what it could not serve.
bool isUnmet(const Type& type, int port) {
    if (!type.service.unmet || port == 0) return false;
    const std::string name = portName(type.out, port);
    return name == "deficit" || name == "unmet";
}

double deviationOf(const std::vector<double>& values) {
    double sum = 0, squares = 0;
    for (const double value : values) {
        sum += value;
    }
    const double mean = sum / static_cast<double>(values.size());
    for (const double value : values) {
        squares += (value - mean) * (value - mean);
    }
    return std::sqrt(squares / static_cast<double>(values.size()));
}

class Choice {
  public:
    Choice(const Recorded& recorded, const Results& results, const std::vector<OutputPort>& kept,
           const Overview& overview)
        : recorded_(recorded), kept_(kept.begin(), kept.end()), months_(overview.months) {
        for (const Flow& flow : results.flows) {
            if (flow.port == 0 || kept_.contains(flow.output())) addFlow(flow);
        }
        for (const State& state : results.states) {
            if (state.kind != SeriesKind::storage) continue;
            const Component& component = recorded.component(recorded.model().findComponent(state.name));
            add(state.name + ":storage", Rank::store, {component.type, 0}, state.values);
        }
        for (const PotentialSeries& series : results.potentials) {
            add(series.group + ":" + std::string(info(series.potential).name), Rank::potential,
                {nullptr, static_cast<int>(series.potential)}, series.values);
        }
    }

    std::size_t count() const { return count_; }

    // All, where they are few; else unmet demands, stores and what varies most, no two alike and not too many of a
    // kind.
    std::vector<ShownSeries> take() {
        std::stable_sort(candidates_.begin(), candidates_.end(), [](const Candidate& a, const Candidate& b) {
            const auto rank = [](const Candidate& one) { return std::min(one.rank, Rank::received); };
            return std::pair(rank(a), -a.variation) < std::pair(rank(b), -b.variation);
        });
        std::vector<const Candidate*> chosen;
        std::map<std::pair<const void*, int>, std::size_t> alike;
        std::map<Rank, std::size_t> byRank;
        std::set<std::vector<double>> known;
        const bool areFew = candidates_.size() <= kMostShown;
        for (const Candidate& one : candidates_) {
            if (chosen.size() == kMostShown) break;
            const bool isNew = one.variation > 0 && known.insert(one.months).second;
            const bool isMeant = isNew && alike[one.like] < kMostAlike &&
                                 (one.rank != Rank::unmet || byRank[one.rank] < kMostUnmet) &&
                                 (one.rank != Rank::store || byRank[one.rank] < kMostStores);
            if (!areFew && !isMeant) continue;
            ++alike[one.like];
            ++byRank[one.rank];
            chosen.push_back(&one);
            if (isMeant) meant_.insert(&one);
        }
        return shownOf(chosen);
    }

  private:
    void addFlow(const Flow& flow) {
        const Type& type = recorded_.type(flow.component);
        const Rank rank = isUnmet(type, flow.port) ? Rank::unmet : flow.port == 0 ? Rank::received : Rank::flow;
        const std::span<const double> sums = recorded_.byMonth(flow.component, flow.port);
        std::vector<double> means(sums.begin(), sums.end());
        for (std::size_t month = 0; month < means.size(); ++month) {
            means[month] /= static_cast<double>(months_.days(month));
        }
        addCandidate({flow.name, rank, {&type, flow.port}, 0, std::move(means)});
    }

    void add(const std::string& name, Rank rank, std::pair<const void*, int> like, const float* values) {
        std::vector<double> means(months_.count(), 0);
        for (std::size_t month = 0; month < means.size(); ++month) {
            for (std::size_t step = months_.begin(month); step < months_.end(month); ++step) {
                means[month] += static_cast<double>(values[step]);
            }
            means[month] /= static_cast<double>(months_.days(month));
        }
        addCandidate({name, rank, like, 0, std::move(means)});
    }

    void addCandidate(Candidate candidate) {
        ++count_;
        candidate.variation = deviationOf(candidate.months);
        if (!std::isfinite(candidate.variation)) candidate.variation = 0;
        candidates_.push_back(std::move(candidate));
    }

    // At first an unmet demand, a store, and what else varies most, each of another kind.
    std::vector<ShownSeries> shownOf(const std::vector<const Candidate*>& chosen) const {
        std::vector<ShownSeries> shown;
        std::set<std::pair<const void*, int>> kinds;
        std::size_t first = 0;
        for (const Candidate* one : chosen) {
            const bool isFirst = first < kMostFirst && meant_.contains(one) && kinds.insert(one->like).second;
            if (isFirst) ++first;
            shown.push_back({one->name, isFirst});
        }
        return shown;
    }

    const Recorded& recorded_;
    std::set<OutputPort> kept_;
    const RunMonths& months_;
    std::vector<Candidate> candidates_;
    std::size_t count_ = 0;
    std::set<const Candidate*> meant_;
};

}  // namespace

void addShown(const Recorded& recorded, const Results& results, const std::vector<OutputPort>& kept,
              Overview& overview) {
    Choice choice(recorded, results, kept, overview);
    overview.series = choice.count();
    overview.shown = choice.take();
}

}  // namespace kesto
