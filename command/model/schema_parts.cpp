#include "schema_parts.h"

#include <fmt/format.h>

#include "units.h"

namespace kesto::schema {

namespace {

constexpr const char* kNumber = R"([-+]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][-+]?[0-9]+)?)";

// "L|m3|ML", with what has a meaning in a pattern made plain.
std::string alternatives(std::string_view unit) {
    std::string text;
    for (const std::string_view one : unitsFor(unit)) {
        if (!text.empty()) text += '|';
        text += one;
    }
    return text;
}

std::string quantityPattern(std::string_view unit) {
    return fmt::format("{} ({})", kNumber, alternatives(unit));
}

std::string describeUnit(std::string_view unit, std::string_view meaning) {
    if (unit.empty() || unit == "-") return std::string(meaning);
    return fmt::format("{}{}[{}]", meaning, meaning.empty() ? "" : " ", unit);
}

void describe(Json& schema, const std::string& text) {
    if (!text.empty()) schema["description"] = text;
}

Json pattern(std::string_view unit, std::size_t length) {
    return {{"type", "array"}, {"items", quantity(unit)}, {"minItems", length}, {"maxItems", length}};
}

}  // namespace

Json text(std::string_view meaning) {
    Json schema{{"type", "string"}, {"minLength", 1}};
    describe(schema, std::string(meaning));
    return schema;
}

Json quantity(std::string_view unit, std::string_view meaning) {
    Json schema{{"type", {"number", "string"}}, {"pattern", "^" + quantityPattern(unit) + "$"}};
    describe(schema, describeUnit(unit, meaning));
    return schema;
}

Json closedTable(Json properties) {
    return {{"type", "object"}, {"properties", std::move(properties)}, {"additionalProperties", false}};
}

Json oneOrMany(const Json& item) {
    // Editors find the keys of an item under "items", not within a condition.
    return {{"type", {"array", "object"}}, {"items", item}, {"if", {{"type", "object"}}}, {"then", item}};
}

std::string sourceName(std::string_view unit) {
    if (unit.empty() || unit == "-") return "values";
    std::string name = "values_";
    for (const char one : unit) {
        name += one == '/' ? "_per_" : one == '%' ? "percent" : std::string(1, one);
    }
    return name;
}

Json source(std::string_view unit, std::string_view meaning) {
    Json schema{{"$ref", "#/$defs/" + sourceName(unit)}};
    describe(schema, describeUnit(unit, meaning));
    return schema;
}

Json sourceOf(std::string_view unit, std::string_view meaning, bool isAssigned) {
    Json keys{{"value", quantity(unit)},
              {"column", text("column of the file")},
              {"monthly", pattern(unit, 12)},
              {"weekly", pattern(unit, 7)},
              {"unit", {{"enum", unitsFor(unit)}}},
              {"scale", quantity("-", "factor on the values, after the conversion of units")},
              {"offset", {{"type", "number"}, {"description", describeUnit(unit, "added to the scaled values")}}},
              {"file", text("CSV file, instead of that of [series]")},
              {"time", text("its column with the dates")}};
    if (isAssigned) {
        keys["for"] = {{"type", {"array", "string"}}, {"items", text()}, {"minItems", 1}};
    }
    Json schema = closedTable(std::move(keys));
    schema["type"] = {"number", "string", "object"};
    // A text that does not begin with a number and a blank is the name of a column.
    schema["pattern"] = fmt::format("^({}|(?!{} ).+)$", quantityPattern(unit), kNumber);
    schema["if"] = {{"type", "object"}};
    for (const char* key : {"value", "column", "monthly", "weekly"}) {
        schema["then"]["oneOf"].push_back({{"required", {key}}});
    }
    describe(schema, describeUnit(unit, meaning));
    return schema;
}

Json namesOf(const Type& type) {
    Json names = Json::array({type.name});
    if (!type.tag.empty()) names.push_back(type.tag);
    for (const int code : type.codes) {
        names.push_back(code);
    }
    return names;
}

namespace {

void addSeries(Json& keys, const Type& type) {
    const auto add = [&](std::string_view key, SeriesKind kind, std::string_view meaning = {}) {
        keys[std::string(key)] = source(ownUnit(type, kind), meaning.empty() ? info(kind).meaning : meaning);
    };
    for (const SeriesKind kind : {SeriesKind::storage, SeriesKind::quality}) {
        add(fmt::format("initial_{}", info(kind).name), kind);
        add(info(kind).name, kind);
    }
    for (const SeriesKind kind : {SeriesKind::multiplier, SeriesKind::threshold, SeriesKind::demand}) {
        add(info(kind).name, kind);
    }
    for (const SeriesNeed& need : type.series) {
        if (!need.alias.empty()) add(need.alias, need.kind, need.meaning);
    }
}

Json splits() {
    Json split = closedTable({{"members", {{"type", "array"}, {"items", text("name of a store")}}},
                              {"beta", quantity("%", "how much the stores' filling corrects the percentage")}});
    split["required"] = {"members", "beta"};
    return {{"type", "array"}, {"items", std::move(split)}, {"maxItems", 100}};
}

bool needsBrand(const Type& type) {
    for (const Parameter& parameter : type.parameters) {
        if (!parameter.standard) return true;
    }
    return false;
}

bool needsGroup(const Type& type) {
    for (const SeriesNeed& need : type.series) {
        if (need.filing == Filing::group && !need.onlyTracing) return true;
    }
    return false;
}

}  // namespace

Json money(std::string_view meaning) {
    return {{"type", Json::array({"number", "string"})},
            {"minimum", 0},
            {"pattern", "^[0-9.]+([eE][+-]?[0-9]+)? ?[^ ]*$"},
            {"description", meaning}};
}

void addCapital(Json& keys) {
    keys["capital"] = money("to buy and build it, whatever its size");
    keys["capital_per_size"] = money("likewise, for each unit of its size");
    keys["capital_by_size"] = {{"type", "array"},
                               {"minItems", 2},
                               {"items", {{"type", "array"}, {"minItems", 2}, {"maxItems", 2}}},
                               {"description", "[size, capital], ascending; in between along a line"}};
    keys["life"] = quantity("a", "for which it lasts");
}

Json component(const Type& type) {
    Json keys{{"name", {{"type", "string"}, {"minLength", 1}, {"pattern", "^[^:,\"\\n\\t]+$"}}},
              {"type", {{"enum", namesOf(type)}}},
              {"group", text("who uses the water; series and potentials go by group")},
              {"brand", text("name of its parameters in [brands]")},
              {"id", {{"type", "integer"}, {"minimum", 1}, {"maximum", (1 << 24) - 1}}},
              {"size", quantity(type.size.unit, type.size.meaning.empty() ? "not read" : type.size.meaning)}};
    // A text with a unit is not compared.
    const Range& range = type.size.range;
    if (range.below == Beyond::error)
        keys["size"][range.atLow == Beyond::error ? "exclusiveMinimum" : "minimum"] = range.low;
    Json required = Json::array({"name", "type"});
    if (!type.size.meaning.empty() && !type.size.standard) required.push_back("size");
    if (needsBrand(type)) required.push_back("brand");
    if (needsGroup(type)) required.push_back("group");
    addSeries(keys, type);
    addCapital(keys);
    if (type.isAppliance()) keys["kind"] = {{"enum", type.codes}};
    if (type.codes.front() == code::kSplitter) keys["splits"] = splits();
    Json schema = closedTable(std::move(keys));
    schema["description"] = type.summary;
    schema["required"] = std::move(required);
    return schema;
}

}  // namespace kesto::schema
