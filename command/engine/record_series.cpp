// The record's series: of groups, of components, and the states that the engine writes.
#include <algorithm>

#include "record.h"

namespace kesto {

float* Record::constantSeries(float value) {
    const auto known = constants_.find(value);
    if (known != constants_.end()) return known->second;
    owned_.emplace_back(length(), value);
    return constants_[value] = owned_.back().data();
}

// A day before the first step has its value: the engine runs no step there.
float* Record::dailyOf(SourceIndex source) {
    inputs_.push_back(series_.of(source));
    const Floats& values = *inputs_.back();
    if (daysBefore_ == 0) return const_cast<float*>(values.data());
    float*& longer = longer_[source];
    if (!longer) {
        owned_.emplace_back(daysBefore_, values.front());
        owned_.back().insert(owned_.back().end(), values.begin(), values.end());
        longer = owned_.back().data();
    }
    return longer;
}

// Series that the engine only reads are shared between all that name the same source.
void Record::add(SeriesKind kind, int id, SourceIndex source, float standard) {
    if (source == kNoSource) {
        table(kind).push_back({id, constantSeries(standard)});
        return;
    }
    table(kind).push_back({id, dailyOf(source)});
}

void Record::fillGroupSeries() {
    for (const Group& group : model_.groups) {
        for (const SeriesKind kind : kGroupSeries) {
            const bool hasStandard = kind == SeriesKind::demandFluctuation;
            if (hasStandard || group.series[kind] != kNoSource) add(kind, group.id, group.series[kind], 1);
        }
    }
}

// Eleven values a step, one for each kind of appliance. Groups with the same habits share them.
void Record::fillUses() {
    std::map<std::array<const Floats*, kUseKinds>, float*> known;
    for (const Group& group : model_.groups) {
        if (std::all_of(group.uses.begin(), group.uses.end(), [](SourceIndex s) { return s == kNoSource; })) continue;
        std::array<const Floats*, kUseKinds> daily{};
        for (std::size_t kind = 0; kind < kUseKinds; ++kind) {
            if (group.uses[kind] == kNoSource) continue;
            inputs_.push_back(series_.of(group.uses[kind]));
            daily[kind] = inputs_.back().get();
        }
        const auto [same, isNew] = known.emplace(daily, nullptr);
        if (isNew) same->second = weave(daily);
        table(SeriesKind::uses).push_back({group.id, same->second});
    }
}

float* Record::weave(const std::array<const Floats*, kUseKinds>& daily) {
    Floats& values = owned_.emplace_back(length() * kUseKinds, 0);
    for (std::size_t kind = 0; kind < kUseKinds; ++kind) {
        if (!daily[kind]) continue;
        for (std::size_t step = 0; step < steps_; ++step) {
            values[(daysBefore_ + step) * kUseKinds + kind] = (*daily[kind])[step];
        }
    }
    return values.data();
}

void Record::fillOwnSeries() {
    for (const Component& component : model_.components) {
        for (const SeriesKind kind : {SeriesKind::multiplier, SeriesKind::threshold, SeriesKind::demand}) {
            if (component.series[kind] != kNoSource) add(kind, component.id, component.series[kind], 0);
        }
    }
}

// What needs an array of its own in WatQuant or WatQual: states, what was given, and, when sources are traced, the
// quality of all that the engine may take for a source.
std::vector<std::pair<int, SeriesNeed>> Record::stateNeeds() const {
    std::vector<std::pair<int, SeriesNeed>> needs;
    for (std::size_t i = 0; i < model_.components.size(); ++i) {
        const Component& component = model_.components[i];
        for (const SeriesKind kind : {SeriesKind::storage, SeriesKind::quality}) {
            SeriesNeed need{kind, Filing::own};
            bool wanted = component.series[kind] != kNoSource;
            for (const SeriesNeed& one : component.type->series) {
                if (one.kind != kind || one.filing != Filing::own || !isNeeded(model_, one)) continue;
                need = one;
                wanted = true;
            }
            const bool isSource = kind == SeriesKind::quality && canBeSource(component.code);
            if (wanted || (isSource && model_.simulation.traceSources)) needs.emplace_back(static_cast<int>(i), need);
        }
    }
    return needs;
}

// A state is known by its initial value. What is given, as the quality of a well, the engine reads of the day before.
float Record::beforeFirst(SourceIndex source, bool isState) {
    if (isState) return series_.of(source)->front();
    return series_.dayBefore(source).value_or(0);
}

void Record::fillStates() {
    for (const auto& [index, need] : stateNeeds()) {
        const Component& component = model_.components[at(index)];
        float* all = memory_->take<float>(length());
        float* values = all + daysBefore_;
        const SourceIndex source = component.series[need.kind];
        if (source != kNoSource) {
            const auto given = series_.of(source);
            std::copy(given->begin(), given->end(), values);
            if (daysBefore_ > 0) *all = beforeFirst(source, need.isState);
        }
        table(need.kind).push_back({component.id, all});
        states_.push_back(
            {index, need.kind, need.unit.empty() ? info(need.kind).unit : need.unit, values, need.isState});
    }
}

}  // namespace kesto
