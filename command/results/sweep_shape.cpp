#include "sweep_shape.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

#include "recorded.h"

namespace kesto {

namespace {

constexpr std::array<std::string_view, 3> kEvery{"day", "month", "year"};

Day lastOf(Day day, Every every) {
    const CivilDate date = dateOf(day);
    if (every == Every::year) return dayOf({date.year, 12, 31});
    if (every == Every::day) return day;
    return date.month == 12 ? dayOf({date.year, 12, 31}) : dayOf({date.year, date.month + 1, 1}) - 1;
}

float sumOf(std::span<const Signal> signals) {
    double sum = 0;
    for (const Signal& signal : signals) {
        sum += amount(signal);
    }
    return static_cast<float>(sum);
}

// As a mixer would give it, not rounded to a whole number: of days on which water of a known quality flows.
float meanQuality(std::span<const Signal> signals) {
    double water = 0, mass = 0;
    for (const Signal& signal : signals) {
        if (signal.quality == kNoQuality || !(signal.quantity > 0)) continue;
        water += static_cast<double>(signal.quantity);
        mass += static_cast<double>(signal.quantity) * static_cast<double>(signal.quality);
    }
    return water > 0 ? static_cast<float>(mass / water) : kNoQuality;
}

template <class Value, class Make>
float* fill(const std::vector<Period>& periods, const Value* daily, float* to, const Make& make) {
    for (const Period& period : periods) {
        const auto first = static_cast<std::size_t>(period.first - periods.front().first);
        *to++ = make(std::span(daily + first, static_cast<std::size_t>(period.last - period.first) + 1));
    }
    return to;
}

bool isOf(const SeriesTable& table, const Flow& flow) {
    return table.isOfFlows() && flow.unit == table.unit;
}

bool isOf(const SeriesTable& table, const State& state) {
    return table.state == state.kind && state.unit == table.unit;
}

}  // namespace

std::string_view toText(Every every) {
    return kEvery[static_cast<std::size_t>(every)];
}

std::optional<Every> everyFrom(std::string_view text) {
    const auto* const found = std::find(kEvery.begin(), kEvery.end(), text);
    if (found == kEvery.end()) return std::nullopt;
    return static_cast<Every>(found - kEvery.begin());
}

std::vector<Period> periodsOf(Day start, Day end, Every every) {
    std::vector<Period> periods;
    for (Day first = start; first <= end; first = periods.back().last + 1) {
        periods.push_back({first, std::min(lastOf(first, every), end)});
    }
    return periods;
}

std::size_t SweepShape::rows() const {
    std::size_t rows = 0;
    for (const SweepTable& table : tables) {
        rows += table.names.size() * (table.table->isOfFlows() ? 2 : 1);
    }
    return rows;
}

SweepShape sweepShapeOf(const Results& results, Every every) {
    const Simulation& simulation = results.model->simulation;
    SweepShape shape{every, periodsOf(simulation.start, simulation.end, every), {}};
    for (const SeriesTable& table : kSeriesTables) {
        SweepTable series{&table, {}, {}};
        for (const Flow& flow : results.flows) {
            if (!isOf(table, flow)) continue;
            series.names.push_back(flow.name);
            series.carries.emplace_back(toText(flow.carries));
        }
        for (const State& state : results.states) {
            if (isOf(table, state)) series.names.push_back(state.name);
        }
        if (!series.names.empty()) shape.tables.push_back(std::move(series));
    }
    return shape;
}

void layOut(const SweepShape& shape, const Results& results, std::span<float> values) {
    const auto days = static_cast<std::size_t>(shape.periods.back().last - shape.periods.front().first) + 1;
    if (results.steps != days || values.size() != shape.values())
        throw std::logic_error("a member that does not have the shape of its sweep");
    // A day alone is the signal as it is, marks of absence included.
    const bool isDaily = shape.every == Every::day;
    const auto quantityOf = [&](std::span<const Signal> s) { return isDaily ? s.front().quantity : sumOf(s); };
    const auto qualityOf = [&](std::span<const Signal> s) { return isDaily ? s.front().quality : meanQuality(s); };
    float* to = values.data();
    for (const SweepTable& series : shape.tables) {
        const SeriesTable& table = *series.table;
        for (const Flow& flow : results.flows) {
            if (isOf(table, flow)) to = fill(shape.periods, flow.signals, to, quantityOf);
        }
        for (const Flow& flow : results.flows) {
            if (isOf(table, flow)) to = fill(shape.periods, flow.signals, to, qualityOf);
        }
        for (const State& state : results.states) {
            if (isOf(table, state)) to = fill(shape.periods, state.values, to, [](auto s) { return s.back(); });
        }
    }
}

void layOutMissing(const SweepShape& shape, std::span<float> values) {
    float* to = values.data();
    for (const SweepTable& series : shape.tables) {
        const std::size_t count = series.names.size() * shape.periods.size();
        to = std::fill_n(to, count, std::numeric_limits<float>::quiet_NaN());
        if (series.table->isOfFlows()) to = std::fill_n(to, count, kNoQuality);
    }
}

}  // namespace kesto
