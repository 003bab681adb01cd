// Checks of single components: brand, size, group, series, what the type asks of the run.
#include <fmt/format.h>

#include <cmath>
#include <map>

#include "checks.h"
#include "shared_faults.h"

namespace kesto {

namespace {

class ComponentChecks {
  public:
    ComponentChecks(const Model& model, SeriesValues& series, Diagnostics& diagnostics)
        : model_(model), series_(series), diagnostics_(diagnostics) {
        for (const Component& component : model.components) {
            if (component.code == code::kReservoir) ++reservoirs_[component.group];
        }
    }

    void check(const Component& component) {
        checkBrand(component);
        checkSize(component);
        checkSeries(component);
        checkUses(component);
        checkRun(component);
        checkReservoirs(component);
        checkSplits(component);
    }

    void reportShared() { shared_.report(diagnostics_); }

    void checkBrandsAreUsed() {
        for (const Brand& brand : model_.brands) {
            if (!usedBrands_.contains(brand.id)) {
                diagnostics_.warning("unused-brand", brand.place,
                                     fmt::format("brand \"{}\" is used by no component", brand.name));
            }
        }
    }

  private:
    void error(ErrorName code, const Place& place, const Component& component, std::string_view text) {
        diagnostics_.error(code, place, fmt::format("{} ({}): {}", nameOf(component), component.type->name, text),
                           component.name);
    }

    void checkBrand(const Component& component) {
        if (component.brand >= 0) usedBrands_[component.brand + 1] = true;
        for (const Parameter& parameter : component.type->parameters) {
            if (parameter.standard || component.brand == kUnknown) continue;
            if (component.brand < 0) {
                error("missing-brand", component.place, component,
                      fmt::format("has no brand; expected one that gives {}", parameter.name));
                return;
            }
            const Brand& brand = model_.brands[static_cast<std::size_t>(component.brand)];
            if (brand.specifications.contains(parameter.number)) continue;
            shared_.addError("missing-parameter", brand.place, component,
                             fmt::format("brand \"{}\" does not give {} [{}], {}; needed by", brand.name,
                                         parameter.name, parameter.unit, parameter.meaning));
        }
    }

    void checkSize(const Component& component) {
        const Size& size = component.type->size;
        if (!size.meaning.empty() && !size.standard && !component.hasSize) {
            error("missing-size", component.place, component,
                  fmt::format("has no size; expected its {}{}", size.meaning,
                              size.unit.empty() ? "" : fmt::format(" [{}]", size.unit)));
        }
        if (size.meaning.empty() && component.hasSize) {
            diagnostics_.warning("unread-size", component.sizePlace,
                                 fmt::format("{}: a {} does not read size", nameOf(component), component.type->name),
                                 component.name);
        }
        if (component.code == code::kDelay && component.hasSize &&
            (component.size > 2147483647.0 || std::fmod(std::abs(component.size), 1) > 0)) {
            error("wrong-value", component.sizePlace, component,
                  fmt::format("size is {}; expected a whole number of steps, 0 or more", component.size));
        }
    }

    void checkSeries(const Component& component) {
        for (const SeriesNeed& need : component.type->series) {
            if (!isNeeded(model_, need) || need.kind == SeriesKind::uses) continue;
            const SourceIndex source = sourceFor(model_, component, need);
            if (source != kNoSource) {
                series_.of(source);
                continue;
            }
            const bool hasStandard = need.isState || need.kind == SeriesKind::demandFluctuation;
            if (need.filing == Filing::group && component.group == kUnknown) return;
            if (need.filing == Filing::group && component.group < 0) {
                error("missing-group", component.place, component,
                      fmt::format("has no group; expected one with {}", info(need.kind).name));
                return;
            }
            if (hasStandard) continue;
            if (need.filing == Filing::own) {
                error("missing-series", component.place, component,
                      fmt::format("has no {}; expected a number or a series of its own",
                                  need.alias.empty() ? info(need.kind).name : need.alias));
            } else {
                missingOfGroup(component, info(need.kind).name, info(need.kind).unit);
            }
        }
        for (const SeriesKind given : {SeriesKind::storage, SeriesKind::quality}) {
            if (component.series[given] != kNoSource) series_.of(component.series[given]);
        }
    }

    void missingOfGroup(const Component& component, std::string_view what, std::string_view unit) {
        const Group& group = model_.groups[static_cast<std::size_t>(component.group)];
        shared_.addError("missing-series", group.place, component,
                         fmt::format("group \"{}\" has no {} [{}], needed by", group.name, what, unit),
                         fmt::format("; expected it in [groups.{}] or in [series]", group.name));
    }

    void checkUses(const Component& component) {
        if (!component.type->isAppliance() || component.group < 0 || component.code < 1) return;
        const Group& group = model_.groups[static_cast<std::size_t>(component.group)];
        const SourceIndex source = group.uses[static_cast<std::size_t>(component.code) - 1];
        if (source != kNoSource) {
            series_.of(source);
        } else {
            shared_.addError(
                "missing-series", group.place, component,
                fmt::format("group \"{}\" has no uses of kind {} [1/d], needed by", group.name, component.code),
                fmt::format("; expected uses = {{ {} = ... }} in [groups.{}]", component.code, group.name));
        }
    }

    void checkRun(const Component& component) {
        const Simulation& simulation = model_.simulation;
        if (component.type->dailyOnly && simulation.timeStep != 1) {
            error("daily-only", component.place, component,
                  fmt::format("works on daily steps only, but time_step is {}", simulation.timeStep));
        }
        if (component.type->usesLatitude && !simulation.latitude) {
            error("missing-latitude", component.place, component,
                  "needs the latitude of the site; expected latitude in [simulation]");
        }
        if (component.type->usesLatitude) checkTemperatures(component);
    }

    // The engine stops on a day whose minimum is above its maximum.
    void checkTemperatures(const Component& component) {
        if (component.group < 0 || checkedGroups_.contains(component.group)) return;
        checkedGroups_[component.group] = true;
        const Group& group = model_.groups[static_cast<std::size_t>(component.group)];
        const SourceIndex low = group.series[SeriesKind::temperatureMin];
        const SourceIndex high = group.series[SeriesKind::temperatureMax];
        if (low == kNoSource || high == kNoSource) return;
        const auto lows = series_.of(low);
        const auto highs = series_.of(high);
        if (!lows || !highs) return;
        for (std::size_t step = 0; step < lows->size(); ++step) {
            if (!((*lows)[step] > (*highs)[step])) continue;
            error("crossed-temperatures", series_.placeOf(low, step), component,
                  fmt::format("on {} temperature_min is {}, above temperature_max {}",
                              toText(model_.simulation.start + static_cast<Day>(step)), (*lows)[step], (*highs)[step]));
            return;
        }
    }

    void checkReservoirs(const Component& component) {
        const Type& type = *component.type;
        const int found = reservoirs_[component.group];
        if (type.reservoirs == 0 || component.group == kUnknown || !model_.isNetworkComplete ||
            found >= type.reservoirs)
            return;
        const std::string text = fmt::format("finds {} reservoir{} in its group; expected {}", found,
                                             found == 1 ? "" : "s", type.reservoirs);
        if (type.reservoirsOptional && component.group < 0) return;
        if (type.reservoirsOptional) {
            diagnostics_.warning("few-reservoirs", component.place,
                                 fmt::format("{} ({}): {}", nameOf(component), type.name, text), component.name);
        } else {
            error("missing-reservoir", component.place, component, text);
        }
    }

    // The engine compares what each member of a splitter stores with specification 1 of its brand.
    void checkSplits(const Component& component) {
        for (const Split& split : component.splits) {
            for (const int member : split.members) {
                const Component& store = model_.components[static_cast<std::size_t>(member)];
                const bool hasState = store.series[SeriesKind::storage] != kNoSource || keepsStorage(*store.type);
                if (!hasState) {
                    error("bad-split", split.place, component,
                          fmt::format("its member \"{}\" stores nothing; expected storage for it", store.name));
                }
                const bool hasCapacity =
                    store.brand >= 0 && model_.brands[static_cast<std::size_t>(store.brand)].specifications.contains(1);
                if (!hasCapacity) {
                    error("bad-split", split.place, component,
                          fmt::format("the brand of its member \"{}\" has no specification 1, its "
                                      "capacity",
                                      store.name));
                }
            }
        }
        if (component.splits.size() > 100) {
            error("bad-split", component.splits[100].place, component,
                  "the engine uses no more than 100 splits of a splitter");
        }
    }

    static bool keepsStorage(const Type& type) {
        for (const SeriesNeed& need : type.series) {
            if (need.kind == SeriesKind::storage && need.isState) return true;
        }
        return false;
    }

    const Model& model_;
    SeriesValues& series_;
    Diagnostics& diagnostics_;
    SharedFaults shared_;
    std::map<int, int> reservoirs_;  // by group
    std::map<int, bool> usedBrands_;
    std::map<int, bool> checkedGroups_;
};

}  // namespace

void checkComponents(const Model& model, SeriesValues& series, Diagnostics& diagnostics) {
    ComponentChecks checks(model, series, diagnostics);
    for (const Component& component : model.components) {
        checks.check(component);
    }
    checks.reportShared();
    if (model.isNetworkComplete) checks.checkBrandsAreUsed();
}

}  // namespace kesto
