#include "model.h"

#include <algorithm>

namespace kesto {

namespace {

int find(const std::map<std::string, int, std::less<>>& index, std::string_view name) {
    const auto found = index.find(name);
    return found == index.end() ? -1 : found->second;
}

template <class T>
std::vector<std::string_view> namesOf(const std::vector<T>& things) {
    std::vector<std::string_view> names;
    names.reserve(things.size());
    for (const T& thing : things) {
        names.push_back(thing.name);
    }
    return names;
}

}  // namespace

int Model::findBrand(std::string_view name) const {
    return find(brandIndex, name);
}
int Model::findGroup(std::string_view name) const {
    return find(groupIndex, name);
}
int Model::findComponent(std::string_view name) const {
    return find(componentIndex, name);
}

int Model::addSource(SeriesSource source) {
    sources.push_back(std::move(source));
    return static_cast<int>(sources.size()) - 1;
}

std::vector<std::string_view> Model::brandNames() const {
    return namesOf(brands);
}
std::vector<std::string_view> Model::groupNames() const {
    return namesOf(groups);
}
std::vector<std::string_view> Model::componentNames() const {
    return namesOf(components);
}

std::optional<std::string_view> unitBooked(const Component& component, Potential potential) {
    const Type& type = *component.type;
    if (std::find(type.potentials.begin(), type.potentials.end(), potential) == type.potentials.end()) {
        return std::nullopt;
    }
    const bool onlyIndependentUse = type.isAppliance() && potential == kInfiltration;
    if (onlyIndependentUse && component.code != code::kOutdoorUse) return std::nullopt;
    return type.booksDepth ? "mm" : info(potential).unit;
}

namespace {

// A machine that its brand gives no energy books zeros.
bool booksNoEnergy(const Model& model, const Component& component) {
    const Parameter* parameter = findParameter(*component.type, spec::kEnergyPerVolume);
    if (!parameter || component.brand < 0) return false;
    const auto& given = model.brands[at(component.brand)].specifications;
    const auto found = given.find(parameter->number);
    return (found == given.end() ? parameter->standard.value_or(0) : found->second.value) == 0;
}

}  // namespace

std::vector<BookedEnergy> energyOfGroups(const Model& model) {
    std::vector<BookedEnergy> groups(model.groups.size());
    for (const Component& component : model.components) {
        if (component.group < 0 || !unitBooked(component, kEnergy) || booksNoEnergy(model, component)) continue;
        BookedEnergy& group = groups[at(component.group)];
        (component.type->booksHeat ? group.heat : group.machine) = &component;
    }
    return groups;
}

SourceIndex sourceFor(const Model& model, const Component& component, const SeriesNeed& need) {
    if (need.filing == Filing::own) return component.series[need.kind];
    if (component.group < 0) return kNoSource;
    return model.groups[static_cast<std::size_t>(component.group)].series[need.kind];
}

bool isNeeded(const Model& model, const SeriesNeed& need) {
    return !need.onlyTracing || model.simulation.traceSources;
}

std::string nameOf(const Component& component) {
    return "component \"" + component.name + "\"";
}

std::string outputName(const Component& component, int port) {
    return component.name + ":" + portName(component.type->out, port);
}

}  // namespace kesto
