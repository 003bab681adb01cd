#include <map>
#include <tuple>

#include "fields.h"
#include "month_terms.h"
#include "overview_parts.h"

namespace kesto {

namespace {

constexpr std::size_t kMost = 300;

// Group, code of a kind of components, output or 0 for what they store, what it carries.
using Key = std::tuple<int, int, int, Carries>;

struct Collected {
    SeriesSum sum;
    int components = 0;
    bool isWhole = true;  // each of them was recorded
};

class Sums {
  public:
    Sums(const Recorded& recorded, const Results& results, const Multiplicity& multiplicity, const RunMonths& months)
        : recorded_(recorded), multiplicity_(multiplicity), months_(months) {
        for (int i = 0; i < recorded.components(); ++i) {
            // A litre passes one junction after the other: a sum of them says nothing.
            const Field field = fieldOf(recorded.type(i));
            if (field == Field::routing || field == Field::quality) continue;
            for (int port = 1; port <= recorded.outputs(i); ++port) {
                addFlow(i, port);
            }
        }
        for (const State& state : results.states) {
            if (state.kind == SeriesKind::storage) addStorage(state);
        }
    }

    // One component alone is no sum. Where groups are many, types must do.
    std::vector<SeriesSum> take() {
        std::vector<SeriesSum> sums;
        for (const bool ofGroups : {false, true}) {
            std::vector<SeriesSum> more;
            for (auto& [key, one] : byKey_) {
                const bool isOfGroup = one.sum.group != kOutside;
                if (isOfGroup == ofGroups && one.components > 1 && one.isWhole) more.push_back(std::move(one.sum));
            }
            if (sums.size() + more.size() > kMost) break;
            sums.insert(sums.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
        }
        return sums;
    }

  private:
    void addFlow(int component, int port) {
        const Type& type = recorded_.type(component);
        const Carries carries = recorded_.carriers().ofOutput(component, port);
        const bool isRecorded = recorded_.signals(component, port) != nullptr;
        add(component, port, carries, type.out[at(port) - 1].unit,
            isRecorded ? monthsOf(recorded_, months_, component, port, multiplicity_.of(component)) : Months());
    }

    void addStorage(const State& state) {
        const int component = recorded_.model().findComponent(state.name);
        const Factor& factor = multiplicity_.of(component);
        Months means = sumOfSteps(
            months_, [&](std::size_t step) { return factor.at(step) * static_cast<double>(state.values[step]); });
        for (std::size_t month = 0; month < means.size(); ++month) {
            means[month] /= static_cast<double>(months_.days(month));
        }
        if (state.unit == "L") add(component, 0, Carries::water, state.unit, means);
    }

    void add(int component, int port, Carries carries, std::string_view unit, const Months& months) {
        const int group = recorded_.component(component).group;
        for (const int of : {kOutside, group}) {
            if (of < 0 && of != kOutside) continue;
            const Type& type = recorded_.type(component);
            Collected& one = byKey_[{of, type.codes.front(), port, carries}];
            ++one.components;
            if (one.sum.months.empty()) {
                one.sum = {of, &type, port, carries, unit, Months(months_.count(), 0)};
            }
            if (months.empty()) {
                one.isWhole = false;
            } else {
                kesto::add(one.sum.months, months);
            }
            if (group < 0) break;
        }
    }

    const Recorded& recorded_;
    const Multiplicity& multiplicity_;
    const RunMonths& months_;
    std::map<Key, Collected> byKey_;
};

}  // namespace

void addSums(const Recorded& recorded, const Results& results, const Multiplicity& multiplicity, Overview& overview) {
    overview.sums = Sums(recorded, results, multiplicity, overview.months).take();
}

}  // namespace kesto
