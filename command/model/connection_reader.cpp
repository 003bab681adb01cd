// Reads what ties components together: connections, and the stores that a splitter looks at.
#include <fmt/format.h>

#include <algorithm>

#include "reader_parts.h"

namespace kesto {

namespace {

// "wc:2", "wc:demand", or "roof" where there is only one port.
void readEnd(Reading& reading, Section& section, std::string_view key, bool isSender, int& component, int& port) {
    component = kNone;
    const auto text = section.requireText(key);
    if (!text) return;
    const std::size_t colon = text->value.find(':');
    const std::string name = text->value.substr(0, colon);
    component = reading.model.findComponent(name);
    if (component < 0 && reading.unknownTypes.contains(name)) return;
    if (component < 0) {
        section.diagnostics().error(
            "unknown-name", text->place,
            fmt::format("{}: {} names the component \"{}\", which there is not{}", section.what(), key, name,
                        section.diagnostics().suggest(name, [&] { return reading.model.componentNames(); })));
        return;
    }
    const Type& type = *reading.model.components[static_cast<std::size_t>(component)].type;
    const std::vector<Port>& ports = isSender ? type.out : type.in;
    const std::vector<std::string_view> names = portNames(ports);
    const std::string_view side = isSender ? "output" : "input";
    if (ports.empty()) {
        section.diagnostics().error(
            "unknown-name", text->place,
            fmt::format("{}: {} is \"{}\", but a {} has no {}", section.what(), key, text->value, type.name, side));
        component = kNone;
        return;
    }
    std::optional<int> number;
    if (colon != std::string::npos) {
        const std::string given = text->value.substr(colon + 1);
        number = portNumber(ports, given);
        if (!isSender && !number && (given == "1" || given == "2")) number = given == "1" ? 1 : 2;
    } else if (ports.size() == 1) {
        number = 1;
    }
    if (!number) {
        section.diagnostics().error(
            "unknown-name", text->place,
            fmt::format("{}: {} is \"{}\"; expected an {} of the {}: {}{}", section.what(), key, text->value, side,
                        type.name, listOf(names),
                        colon == std::string::npos
                            ? ""
                            : section.diagnostics().suggest(text->value.substr(colon + 1), [&] { return names; })));
        component = kNone;
        return;
    }
    port = *number;
}

void readMembers(Reading& reading, const Value& members, const std::string& what, Split& split) {
    for (const Value& member : members.items) {
        const int found = reading.model.findComponent(member.text);
        if (found >= 0) {
            split.members.push_back(found);
            continue;
        }
        reading.diagnostics.error(
            "unknown-name", member.place,
            fmt::format("{}: members holds {}, which is no component{}", what, describe(member),
                        reading.diagnostics.suggest(member.text, [&] { return reading.model.componentNames(); })));
    }
}

void readSplit(Reading& reading, Section& section, const Value& item, Component& component) {
    Split split;
    split.place = item.place;
    if (section.require("beta", "a number")) {
        if (const auto beta = section.quantity("beta", "%")) split.beta = beta->value;
    }
    const Value* members = section.require("members", "a list of components");
    if (members && members->kind != Value::Kind::array) {
        section.wrong(*members, "members", "a list of components");
    } else if (members) {
        readMembers(reading, *members, section.what(), split);
    }
    section.finish();
    component.splits.push_back(std::move(split));
}

// The names in one cell, with semicolons between them.
Value listInCell(const Value& cell) {
    Value list = cell;
    list.kind = Value::Kind::array;
    list.fromCell = false;
    for (std::size_t begin = 0; begin <= cell.text.size();) {
        const std::size_t end = std::min(cell.text.find(';', begin), cell.text.size());
        const std::size_t first = std::min(cell.text.find_first_not_of(' ', begin), end);
        const std::size_t last = first == end ? end : cell.text.find_last_not_of(' ', end - 1) + 1;
        Value name;
        name.text = cell.text.substr(first, last - first);
        name.place = cell.place;
        name.place.column += static_cast<int>(first);
        if (!name.text.empty()) list.items.push_back(std::move(name));
        begin = end + 1;
    }
    return list;
}

std::string splitsOf(const Component& component) {
    return fmt::format("component \"{}\": splits", component.name);
}

}  // namespace

void readSplits(Reading& reading, const Value& original) {
    if (!original.field("splits") && reading.overrides.empty()) return;
    const Value* named = original.field("name");
    const Value table = withOverrides(original, {"components", named ? named->text : std::string()}, reading.overrides);
    const Value* splits = table.field("splits");
    const Value* name = table.field("name");
    if (!splits || !name) return;
    const int index = reading.model.findComponent(name->text);
    if (index < 0) return;
    Component& component = reading.model.components[at(index)];
    const std::string what = splitsOf(component);
    const Diagnostics::Subject subject(reading.diagnostics, component.name);
    if (component.code != code::kSplitter || splits->kind != Value::Kind::array) {
        reading.diagnostics.error(
            "wrong-value", splits->place,
            fmt::format("{} is {} of a {}; expected a list of {{ members = [...], beta = ... }} of "
                        "a splitter",
                        what, describe(*splits), component.type->name));
        return;
    }
    for (const Value& item : splits->items) {
        if (item.kind != Value::Kind::table) {
            reading.diagnostics.error(
                "wrong-value", item.place,
                fmt::format("{} holds {}; expected {{ members = [...], beta = ... }}", what, describe(item)));
            continue;
        }
        Section section(item, what, reading.diagnostics);
        readSplit(reading, section, item, component);
    }
}

void readSplitRow(Reading& reading, const Value& original) {
    Value row = original;
    for (Field& field : row.fields) {
        if (field.name.value == "members") field.value = listInCell(field.value);
    }
    Section unnamed(row, "a split", reading.diagnostics);
    const auto name = unnamed.requireText("splitter");
    if (!name) return;
    const int index = reading.model.findComponent(name->value);
    if (index < 0 && reading.unknownTypes.contains(name->value)) return;
    if (index < 0 || reading.model.components[at(index)].code != code::kSplitter) {
        unnamed.wrong(*row.field("splitter"), "splitter",
                      "the name of a splitter" +
                          reading.diagnostics.suggest(name->value, [&] { return reading.model.componentNames(); }));
        return;
    }
    Component& component = reading.model.components[at(index)];
    const Diagnostics::Subject subject(reading.diagnostics, component.name);
    Section section(row, splitsOf(component), reading.diagnostics);
    section.allow("splitter");
    readSplit(reading, section, row, component);
}

void readConnection(Reading& reading, const Value& table) {
    Section section(table, "a connection", reading.diagnostics);
    Connection connection;
    connection.place = table.place;
    readEnd(reading, section, "from", true, connection.from, connection.fromPort);
    readEnd(reading, section, "to", false, connection.to, connection.toPort);
    section.finish();
    if (connection.from < 0 || connection.to < 0) {
        reading.model.isNetworkComplete = false;
        return;
    }
    reading.model.connections.push_back(std::move(connection));
}

}  // namespace kesto
