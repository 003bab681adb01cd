#include "scenarios.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

namespace kesto {

namespace {

// A table stands for the values in it, each at a path of its own.
void collect(const KeyPath& path, const Value& value, const Place& keyPlace, std::vector<Override>& overrides) {
    if (value.kind != Value::Kind::table) {
        overrides.push_back({path, value, keyPlace});
        return;
    }
    for (const Field& field : value.fields) {
        KeyPath inner = path;
        inner.push_back(field.name.value);
        collect(inner, field.value, field.name.place, overrides);
    }
}

// One scenario gives each value once; TOML does not see that a.b and "a.b" are the same key.
void refuseLost(const std::vector<Override>& overrides, const std::string& what, Diagnostics& diagnostics) {
    GivenPaths given;
    for (const Override& one : overrides) {
        if (const auto lost = given.add(one.path)) {
            diagnostics.error(
                "repeated", one.keyPlace,
                *lost == one.path
                    ? fmt::format("{}: {} is given twice; expected it once", what, toText(*lost))
                    : fmt::format("{}: {} replaces {}; expected one of them", what, toText(one.path), toText(*lost)));
        }
    }
}

std::vector<Override> valuesOf(const Value& scenario, const std::string& what, Diagnostics& diagnostics) {
    std::vector<Override> overrides;
    for (const Field& field : scenario.fields) {
        const bool isTable = field.value.kind == Value::Kind::table;
        if (field.name.value == "title" && !isTable) continue;
        auto path = parseKeyPath(field.name.value);
        // The name of a table of the model is no whole path: its values make it one.
        if (isTable && isModelTable(field.name.value)) path = KeyPath{field.name.value};
        if (!path || (!isTable && path->size() < 3 && path->front() == "components")) {
            diagnostics.error("wrong-value", field.name.place,
                              fmt::format("{}: \"{}\" leads to no value; expected a key such as tank.size or "
                                          "series.rainfall.scale",
                                          what, field.name.value));
            continue;
        }
        collect(*path, field.value, field.name.place, overrides);
    }
    refuseLost(overrides, what, diagnostics);
    return overrides;
}

}  // namespace

std::vector<std::vector<Override>> readScenarios(Reading& reading, const Value* table,
                                                 const std::vector<std::string>& asked) {
    std::map<std::string, std::vector<Override>, std::less<>> values;
    std::vector<std::string_view> names;
    if (table && table->kind != Value::Kind::table) {
        reading.diagnostics.error("wrong-value", table->place,
                                  fmt::format("scenarios is {}; expected [scenarios.NAME]", describe(*table)));
    }
    for (const Field& field : table ? table->fields : std::vector<Field>()) {
        const std::string what = fmt::format("[scenarios.{}]", field.name.value);
        if (field.value.kind != Value::Kind::table) {
            reading.diagnostics.error("wrong-value", field.value.place,
                                      fmt::format("{} is {}; expected a table", what, describe(field.value)));
            continue;
        }
        if (field.name.value.empty()) {
            reading.diagnostics.error("wrong-value", field.name.place,
                                      "a scenario has no name; expected [scenarios.NAME]");
            continue;
        }
        const Value* title = field.value.field("title");
        if (title && title->kind != Value::Kind::text && title->kind != Value::Kind::table) {
            reading.diagnostics.error("wrong-value", title->place,
                                      fmt::format("{}: title is {}; expected a text", what, describe(*title)));
        }
        reading.model.scenarios.push_back({field.name.value, title ? title->text : "", field.name.place});
        values[field.name.value] = valuesOf(field.value, what, reading.diagnostics);
    }
    for (const Scenario& scenario : reading.model.scenarios) {
        names.push_back(scenario.name);
    }
    std::vector<std::vector<Override>> chosen;
    for (const std::string& name : asked) {
        const auto found = values.find(name);
        if (found != values.end()) {
            chosen.push_back(found->second);
            continue;
        }
        chosen.emplace_back();
        const Place place{std::make_shared<const std::string>("--scenario " + name), 0, 0};
        const std::string known = names.empty() ? "the model has none" : "its scenarios are " + listOf(names, "and");
        reading.diagnostics.error("unknown-name", place,
                                  fmt::format("there is no scenario \"{}\"; {}{}", name, known,
                                              reading.diagnostics.suggest(name, [&] { return names; })));
    }
    return chosen;
}

}  // namespace kesto
