// Reads components.
#include <fmt/format.h>

#include <cmath>

#include "reader_parts.h"

namespace kesto {

namespace {

const Type* readType(Section& section, int& code) {
    const Value* value = section.require("type", "the name of a type (see kesto types)");
    if (!value) return nullptr;
    const Type* type = nullptr;
    if (value->isNumber() && !value->fromCell) {
        code = static_cast<int>(value->number);
        type = value->number == code ? findType(code) : nullptr;
    } else if (value->isText()) {
        type = findType(value->text);
        if (type && !type->isAppliance()) code = type->codes.front();
    }
    if (!type) {
        section.wrong(*value, "type",
                      "the name of a type (see kesto types)" + section.diagnostics().suggest(value->text, typeNames));
    }
    return type;
}

void readKind(Section& section, const Type& type, int& code) {
    const Value* kind = section.find("kind");
    if (!type.isAppliance()) {
        if (kind) section.wrong(*kind, "kind", fmt::format("none: only appliances have a kind, not {}", type.name));
        return;
    }
    if (code > 0 && !kind) return;
    if (!kind && !section.require("kind", "1, 2 or 4 to 10")) return;
    for (const int one : type.codes) {
        if (kind->isNumber() && kind->number == one) code = one;
    }
    if (code == 0) section.wrong(*kind, "kind", "1, 2 or 4 to 10");
}

void readGroupName(Reading& reading, Section& section, Component& component) {
    const auto name = section.text("group");
    if (!name) return;
    component.group = reading.model.findGroup(name->value);
    if (component.group >= 0) return;
    if (!reading.groupsDeclared) {
        component.group = addGroup(reading, *name);
        return;
    }
    component.group = kUnknown;
    section.diagnostics().error(
        "unknown-name", name->place,
        fmt::format("{}: there is no group \"{}\" in [groups]{}", section.what(), name->value,
                    section.diagnostics().suggest(name->value, [&] { return reading.model.groupNames(); })));
}

void readBrandName(Reading& reading, Section& section, Component& component) {
    const auto name = section.text("brand");
    if (!name) return;
    component.brand = reading.model.findBrand(name->value);
    if (component.brand >= 0) return;
    component.brand = kUnknown;
    section.diagnostics().error(
        "unknown-name", name->place,
        fmt::format("{}: there is no brand \"{}\"{}", section.what(), name->value,
                    section.diagnostics().suggest(name->value, [&] { return reading.model.brandNames(); })));
}

void readOwnSeries(Reading& reading, Section& section, Component& component) {
    const auto read = [&](std::string_view key, SeriesKind kind) {
        const Value* value = section.find(key);
        if (!value) return;
        const auto source =
            readSource(reading, *value, ownUnit(*component.type, kind), fmt::format("{}: {}", section.what(), key));
        if (component.series[kind] != kNoSource) {
            section.wrong(*value, key, "not to be given twice, under two names");
            return;
        }
        component.series[kind] = source;
    };
    read("initial_storage", SeriesKind::storage);
    read("initial_quality", SeriesKind::quality);
    for (const SeriesNeed& need : component.type->series) {
        if (!need.alias.empty()) read(need.alias, need.kind);
    }
    for (const SeriesKind kind : {SeriesKind::storage, SeriesKind::quality, SeriesKind::multiplier,
                                  SeriesKind::threshold, SeriesKind::demand}) {
        read(info(kind).name, kind);
    }
}

void readSize(Section& section, Component& component) {
    const Size& size = component.type->size;
    const auto given = section.quantity("size", size.unit);
    component.sizePlace = given ? given->place : component.place;
    component.hasSize = section.find("size") != nullptr;
    // One that could not be read is no number, which no check minds.
    component.size = given ? given->value : component.hasSize ? std::nan("") : size.standard.value_or(0);
}

void readName(Section& section, const PlacedText& name, Component& component) {
    component.name = name.value;
    component.place = name.place;
    if (name.value.find_first_of(":,\"\n\t") == std::string::npos) return;
    section.diagnostics().error(
        "wrong-value", name.place,
        fmt::format("{}: a name cannot hold a colon, comma, quote, tab or line end", section.what()));
}

void addComponent(Reading& reading, Section& section, Component component) {
    Model& model = reading.model;
    const int index = static_cast<int>(model.components.size());
    const auto [existing, isNew] = model.componentIndex.emplace(component.name, index);
    if (!isNew) {
        const Place& first = model.components[static_cast<std::size_t>(existing->second)].place;
        section.diagnostics().error(
            "repeated", component.place,
            fmt::format("{} stands here and at {}; expected each name once", section.what(), toString(first)));
        return;
    }
    model.components.push_back(std::move(component));
}

}  // namespace

void readComponent(Reading& reading, const Value& original) {
    const Value* named = original.field("name");
    const Value table = withOverrides(original, {"components", named ? named->text : std::string()}, reading.overrides);
    Component component;
    component.place = table.place;
    Section unnamed(table, "a component", reading.diagnostics);
    const auto name = unnamed.requireText("name");
    Section section(table, name ? fmt::format("component \"{}\"", name->value) : "a component", reading.diagnostics);
    const Diagnostics::Subject subject(reading.diagnostics, name ? name->value : "");
    section.allow("name");
    if (name) readName(section, *name, component);
    component.type = readType(section, component.code);
    if (!component.type) {
        reading.unknownTypes.insert(component.name);
        reading.model.isNetworkComplete = false;
        return;
    }
    readKind(section, *component.type, component.code);
    if (const auto id = section.integer("id", 1, (1 << 24) - 1)) {
        component.id = *id;
        component.idIsFixed = true;
    }
    readGroupName(reading, section, component);
    readBrandName(reading, section, component);
    readSize(section, component);
    component.capital = readCapital(section, component.type->size.unit, reading.model.economics.currency);
    readOwnSeries(reading, section, component);
    section.allow("splits");
    section.finish();
    if (name) addComponent(reading, section, std::move(component));
}

}  // namespace kesto
