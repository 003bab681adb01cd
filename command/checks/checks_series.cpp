// Values of series, and initial states, beyond their range in the catalogue.
#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <tuple>

#include "checks.h"

namespace kesto {

namespace {

// A series as a message names it.
struct Named {
    std::string owner;      // component "tank" (tank)
    std::string component;  // empty: it is that of a group
    std::string name;
    std::string_view unit;
    Range range;
    bool isState = false;  // of which the engine reads the first value alone
};

class SeriesRanges {
  public:
    SeriesRanges(const Model& model, SeriesValues& series, Diagnostics& diagnostics)
        : model_(model), series_(series), diagnostics_(diagnostics) {}

    // All that are given, whether or not a component needs them: the record holds them all.
    void check() {
        for (const Group& group : model_.groups) {
            checkGroup(group);
        }
        for (const Component& component : model_.components) {
            for (const SeriesKind kind : {SeriesKind::storage, SeriesKind::quality, SeriesKind::multiplier,
                                          SeriesKind::threshold, SeriesKind::demand}) {
                checkOwn(component, kind);
            }
        }
    }

  private:
    void checkGroup(const Group& group) {
        const std::string owner = fmt::format("group \"{}\"", group.name);
        for (const SeriesKind kind : kGroupSeries) {
            const SeriesKindInfo& row = info(kind);
            checkSource({owner, "", std::string(row.name), row.unit, row.range}, kind, group.series[kind]);
        }
        const SeriesKindInfo& uses = info(SeriesKind::uses);
        for (std::size_t kind = 0; kind < group.uses.size(); ++kind) {
            checkSource({owner, "", fmt::format("uses of kind {}", kind + 1), uses.unit, uses.range}, SeriesKind::uses,
                        group.uses[kind]);
        }
    }

    void checkOwn(const Component& component, SeriesKind kind) {
        SeriesNeed need{kind, Filing::own};
        for (const SeriesNeed& one : component.type->series) {
            if (one.kind == kind && one.filing == Filing::own) need = one;
        }
        std::string name(need.alias.empty() ? info(kind).name : need.alias);
        if (need.isState) name = "initial_" + name;
        checkSource({fmt::format("{} ({})", nameOf(component), component.type->name), component.name, name,
                     need.unit.empty() ? info(kind).unit : need.unit, rangeOf(need), need.isState},
                    kind, component.series[kind]);
    }

    // A source that several share is reported once.
    void checkSource(const Named& named, SeriesKind kind, SourceIndex source) {
        if (source < 0 || !seen_.insert({kind, source, named.isState}).second) return;
        const auto values = series_.of(source);
        if (!values) return;
        const bool isOne = named.isState || model_.sources[at(source)].kind == SeriesSource::Kind::constant;
        const std::size_t steps = isOne ? 1 : values->size();
        std::size_t first = 0, count = 0;
        Beyond worst = Beyond::allowed;
        for (std::size_t step = 0; step < steps; ++step) {
            const Beyond beyond = named.range.beyond(static_cast<double>((*values)[step]));
            if (beyond == Beyond::allowed) continue;
            if (count++ == 0) first = step;
            worst = std::max(worst, beyond);
        }
        if (count > 0) tell(named, kind, source, worst, first, count);
    }

    void tell(const Named& named, SeriesKind kind, SourceIndex source, Beyond beyond, std::size_t step,
              std::size_t count) {
        const float value = (*series_.of(source))[step];
        std::string when;
        const SeriesSource::Kind origin = model_.sources[at(source)].kind;
        const bool isColumn = origin == SeriesSource::Kind::column && !named.isState;
        if (!named.isState && origin != SeriesSource::Kind::constant) {
            when = fmt::format(" on {}", toText(model_.simulation.start + static_cast<Day>(step)));
            if (count > 1) when += fmt::format(" and beyond on {} more day{}", count - 1, count == 2 ? "" : "s");
        }
        const std::string text =
            fmt::format("{}: {} is {}{}; expected {}{}", named.owner, named.name, withUnit(value, named.unit), when,
                        toText(named.range), isColumn ? "; is it a mark for a missing value?" : "");
        if (beyond == Beyond::error) {
            diagnostics_.error("wrong-value", series_.placeOf(source, step), text, named.component);
        } else if (kind == SeriesKind::rainfall) {
            diagnostics_.warning("negative-rain", series_.placeOf(source, step), text);
        } else {
            diagnostics_.warning("odd-value", series_.placeOf(source, step), text, named.component);
        }
    }

    const Model& model_;
    SeriesValues& series_;
    Diagnostics& diagnostics_;
    std::set<std::tuple<SeriesKind, SourceIndex, bool>> seen_;
};

}  // namespace

void checkSeries(const Model& model, SeriesValues& series, Diagnostics& diagnostics) {
    SeriesRanges(model, series, diagnostics).check();
}

}  // namespace kesto
