// Reads groups.
#include <fmt/format.h>

#include "reader_parts.h"

namespace kesto {

namespace {

bool hasUse(const Group& group, int kind) {
    return group.uses[static_cast<std::size_t>(kind) - 1] != kNoSource;
}

// A column of uses gives way to values from outside that name the same uses in the other way.
void dropReplacedColumns(Value& table, const std::string& name, const std::vector<Override>& overrides) {
    for (const Override& one : overrides) {
        const bool isOfUses =
            one.path.size() > 2 && one.path[0] == "groups" && one.path[1] == name && one.path[2] == "uses";
        if (!isOfUses) continue;
        std::erase_if(table.fields, [&](const Field& field) {
            const bool isColumn = field.value.fromCell && field.name.value.starts_with("use_");
            return isColumn && (one.path.size() == 3 || field.name.value == "use_" + one.path[3]);
        });
    }
}

void readUse(Reading& reading, Group& group, int kind, const Value& value, const std::string& what) {
    if (kind < 1 || kind > kUseKinds) {
        reading.diagnostics.error("wrong-value", value.place,
                                  fmt::format("{}: there is no kind {}; expected 1 to 11", what, kind));
        return;
    }
    const SourceIndex source =
        readSource(reading, value, info(SeriesKind::uses).unit, fmt::format("{}: kind {}", what, kind));
    group.uses[static_cast<std::size_t>(kind) - 1] = source;
}

void readUses(Reading& reading, Section& section, Group& group) {
    const Value* uses = section.find("uses");
    if (!uses) return;
    const std::string what = section.what() + ": uses";
    if (uses->kind == Value::Kind::array && uses->items.size() == kUseKinds) {
        for (int kind = 1; kind <= kUseKinds; ++kind) {
            readUse(reading, group, kind, uses->items[static_cast<std::size_t>(kind) - 1], what);
        }
        return;
    }
    if (uses->kind != Value::Kind::table) {
        section.wrong(*uses, "uses", "{ 1 = 5.0, 2 = 0.63 }: uses a day by kind of appliance, or a list of eleven");
        return;
    }
    for (const auto& [key, value] : uses->fields) {
        const auto kind = wholeNumber(key.value);
        if (kind && *kind >= 1 && *kind <= kUseKinds && hasUse(group, *kind)) {
            reading.diagnostics.error(
                "repeated", key.place,
                fmt::format("{}: \"{}\" gives kind {} for the second time; expected it once", what, key.value, *kind));
        } else if (kind) {
            readUse(reading, group, *kind, value, what);
        } else {
            reading.diagnostics.error(
                "wrong-value", key.place,
                fmt::format("{}: \"{}\" is no kind of appliance; expected 1 to 11", what, key.value));
        }
    }
}

}  // namespace

// Of a table, where a list or a table has no place.
void readUseColumns(Reading& reading, Section& section, Group& group) {
    for (int kind = 1; kind <= kUseKinds; ++kind) {
        const std::string key = fmt::format("use_{}", kind);
        const Value* value = section.find(key);
        if (!value) continue;
        if (hasUse(group, kind)) {
            reading.diagnostics.error("repeated", value->place,
                                      fmt::format("{}: {} and uses both give kind {}", section.what(), key, kind));
            continue;
        }
        readUse(reading, group, kind, *value, section.what());
    }
}

int addGroup(Reading& reading, const PlacedText& name) {
    Group group;
    group.name = name.value;
    group.place = name.place;
    const int index = static_cast<int>(reading.model.groups.size());
    reading.model.groupIndex.emplace(group.name, index);
    reading.model.groups.push_back(std::move(group));
    return index;
}

void readGroup(Reading& reading, const PlacedText& name, const Value& original) {
    reading.groupsDeclared = true;
    Value table = withOverrides(original, {"groups", name.value}, reading.overrides);
    dropReplacedColumns(table, name.value, reading.overrides);
    Section section(table, fmt::format("group \"{}\"", name.value), reading.diagnostics);
    if (reading.model.findGroup(name.value) >= 0) {
        reading.diagnostics.error("repeated", name.place,
                                  section.what() + " stands here for the second time; expected each name once");
        return;
    }
    const Value* cell = table.field("name");
    if (cell && cell->fromCell) section.allow("name");
    Group& group = reading.model.groups[static_cast<std::size_t>(addGroup(reading, name))];
    group.potentials = section.boolean("potentials").value_or(true);
    if (const auto id = section.integer("id", 1, (1 << 24) - 1)) group.id = *id;
    readUses(reading, section, group);
    readUseColumns(reading, section, group);
    for (const SeriesKind kind : kGroupSeries) {
        const std::string_view key = info(kind).name;
        const Value* value = section.find(key);
        if (!value) continue;
        group.series[kind] = readSource(reading, *value, info(kind).unit, fmt::format("{}: {}", section.what(), key));
    }
    section.finish();
}

}  // namespace kesto
