#include "schema.h"

#include <fmt/format.h>

#include <map>

#include "model.h"
#include "schema_parts.h"
#include "units.h"
#include "warning_codes.h"

namespace kesto {

namespace {

using namespace schema;

Json boolean(std::string_view meaning) {
    return {{"type", "boolean"}, {"description", meaning}};
}

Json simulation() {
    const auto date = [](std::string_view meaning) {
        return Json{{"type", "string"}, {"pattern", "^-?[0-9]{4,}-[0-9]{2}-[0-9]{2}"}, {"description", meaning}};
    };
    Json latitude = quantity("degrees", "of the site, north positive");
    latitude["minimum"] = -90;
    latitude["maximum"] = 90;
    Json step = quantity("d", "length of a step; the calendar moves one day a step all the same");
    step["exclusiveMinimum"] = 0;
    Json table = closedTable({{"start", date("first day of the run")},
                              {"end", date("last day of the run, which it includes")},
                              {"latitude", latitude},
                              {"time_step", step},
                              {"stop_on_infeasible", boolean("stop when a source cannot give what is asked of it")},
                              {"trace_sources", boolean("mix qualities of service reservoirs and treatment plants "
                                                        "from where their water comes")}});
    table["required"] = {"start", "end"};
    return table;
}

Json economics() {
    const auto years = [](std::string_view meaning) {
        Json value = quantity("a", meaning);
        value["exclusiveMinimum"] = 0;
        return value;
    };
    return closedTable(
        {{"currency", text("in which the prices and the capital are, such as EUR")},
         {"water_price", money("price of mains water, a m3")},
         {"sewage_price", money("price of a m3 that reaches sewage_to, or of mains water where there is none")},
         {"sewage_to",
          {{"type", Json::array({"string", "array"})},
           {"items", {{"type", "string"}}},
           {"description", "water bodies whose water is billed as sewage"}}},
         {"energy_price", money("price of energy, a kWh")},
         {"interest", quantity("-", "a year, as a fraction")},
         {"horizon", years("over which costs are added up; life of what has none of its own")},
         {"count_capacity_cost", boolean("the capacity cost that is booked is one of the yearly costs")},
         {"baseline", text("scenario that the run is compared with")}});
}

Json seriesTable() {
    Json keys{{"file", text("CSV file, one row a day; columns named below stand in it")},
              {"time", text("its column with the dates; without, the first row is the first day of the run")}};
    for (const std::string_view name : seriesKindNames()) {
        const SeriesKind kind = *findSeriesKind(name);
        if (kind == SeriesKind::uses) continue;
        const Json one = sourceOf(info(kind).unit, info(kind).meaning, true);
        keys[std::string(name)] = {{"if", {{"type", "array"}}}, {"then", {{"items", one}}}, {"else", one}};
    }
    return closedTable(std::move(keys));
}

// One name is one number, but types give it a meaning of their own.
Json brand() {
    std::map<std::string_view, std::string> meanings;
    std::map<std::string_view, std::string_view> units;
    for (const Type& type : allTypes()) {
        for (const Parameter& parameter : type.parameters) {
            std::string& meaning = meanings[parameter.name];
            units.emplace(parameter.name, parameter.unit);
            meaning += fmt::format("{}{}: {}", meaning.empty() ? "" : "; ", type.name, parameter.meaning);
        }
    }
    Json keys = Json::object();
    for (const auto& [name, meaning] : meanings) {
        keys[std::string(name)] = quantity(units[name], meaning);
    }
    addCapital(keys);
    Json table = closedTable(std::move(keys));
    table["patternProperties"] = {{"^[1-9][0-9]*$", {{"type", "number"}}}};
    return table;
}

Json group() {
    Json keys{{"potentials", boolean("false: nothing is booked under this group")},
              {"id", {{"type", "integer"}, {"minimum", 1}, {"maximum", (1 << 24) - 1}}}};
    Json kinds = Json::object();
    for (int kind = 1; kind <= kUseKinds; ++kind) {
        kinds[std::to_string(kind)] = source(info(SeriesKind::uses).unit);
    }
    for (int kind = 1; kind <= kUseKinds; ++kind) {
        keys[fmt::format("use_{}", kind)] = kinds[std::to_string(kind)];
    }
    keys["uses"] = closedTable(std::move(kinds));
    keys["uses"]["type"] = {"object", "array"};
    keys["uses"]["items"] = source(info(SeriesKind::uses).unit);
    keys["uses"]["minItems"] = keys["uses"]["maxItems"] = kUseKinds;
    keys["uses"]["description"] = info(SeriesKind::uses).meaning;
    for (const SeriesKind kind : kGroupSeries) {
        keys[std::string(info(kind).name)] = source(info(kind).unit, info(kind).meaning);
    }
    return closedTable(std::move(keys));
}

Json reference(std::string_view name) {
    return {{"$ref", fmt::format("#/$defs/{}", name)}};
}

// The keys of all types, by which editors complete before a type is chosen; each type refuses those of others.
Json keysOfAll() {
    Json keys = Json::object();
    for (const Type& type : allTypes()) {
        const Json ofType = component(type);
        for (const auto& [key, value] : ofType.at("properties").items()) {
            if (keys.contains(key)) continue;
            keys[key] = Json::object();
            if (value.contains("description")) keys[key]["description"] = value.at("description");
        }
    }
    return keys;
}

// One of the types, by its name; then what that type can have.
Json anyComponent() {
    Json names = Json::array();
    Json cases = Json::array();
    for (const Type& type : allTypes()) {
        const Json ofType = namesOf(type);
        names.insert(names.end(), ofType.begin(), ofType.end());
        cases.push_back({{"if", {{"required", {"type"}}, {"properties", {{"type", {{"enum", ofType}}}}}}},
                         {"then", reference(type.name)}});
        // An appliance says its kind, unless the number in place of its type's name does.
        if (!type.isAppliance()) continue;
        cases.push_back(
            {{"if", {{"required", {"type"}}, {"properties", {{"type", {{"enum", {type.name, type.tag}}}}}}}},
             {"then", {{"required", {"kind"}}}}});
    }
    Json keys = keysOfAll();
    keys["type"] = {{"enum", std::move(names)}};
    return {{"type", "object"},
            {"required", {"name", "type"}},
            {"properties", std::move(keys)},
            {"allOf", std::move(cases)}};
}

Json connection() {
    Json table = closedTable({{"from", text("COMPONENT:OUTPUT, or COMPONENT where it has one output")},
                              {"to", text("COMPONENT:INPUT, or COMPONENT where it has one input")}});
    table["required"] = {"from", "to"};
    return table;
}

Json tables() {
    Json keys = Json::object();
    for (const char* key : {"brands", "groups", "components", "splits", "connections"}) {
        keys[key] = text("CSV file with a row for each, and the keys as columns");
    }
    return closedTable(std::move(keys));
}

Json accepted() {
    std::string codes;
    for (const WarningCode& code : kWarningCodes) {
        codes += fmt::format("{}{}", codes.empty() ? "" : "|", code.name);
    }
    return {{"type", "array"},
            {"description", "warnings that are meant: CODE COMPONENT, or CODE for all components"},
            {"items", {{"type", "string"}, {"pattern", fmt::format("^({})( .+)?$", codes)}}}};
}

// Keys are those of --set, in tables or as one text.
Json scenario() {
    return {{"type", "object"},
            {"description", "values that take the place of the model's: keys as after --set"},
            {"properties", {{"title", text()}}}};
}

Json named(std::string_view definition) {
    return {{"type", "object"}, {"additionalProperties", reference(definition)}};
}

}  // namespace

std::string modelSchema() {
    Json file = closedTable({{"kesto_model", {{"const", 1}, {"description", "version of this format"}}},
                             {"title", text()},
                             {"place", text()},
                             {"accept", accepted()},
                             {"simulation", simulation()},
                             {"economics", economics()},
                             {"tables", tables()},
                             {"scenarios", {{"type", "object"}, {"additionalProperties", scenario()}}},
                             {"series", oneOrMany(reference("series"))},
                             {"brands", named("brand")},
                             {"groups", named("group")},
                             {"components", oneOrMany(reference("component"))},
                             {"connections", oneOrMany(reference("connection"))}});
    Json definitions{{"series", seriesTable()},
                     {"brand", brand()},
                     {"group", group()},
                     {"connection", connection()},
                     {"component", anyComponent()}};
    const auto define = [&](std::string_view unit) {
        Json& definition = definitions[sourceName(unit)];
        if (definition.is_null()) definition = sourceOf(unit);
    };
    for (const std::string_view name : seriesKindNames()) {
        define(info(*findSeriesKind(name)).unit);
    }
    for (const Type& type : allTypes()) {
        definitions[std::string(type.name)] = component(type);
        for (const SeriesNeed& need : type.series) {
            if (!need.unit.empty()) define(need.unit);
        }
    }
    Json all{{"$schema", "https://json-schema.org/draft/2020-12/schema"}, {"title", "Model file of kesto"}};
    all.update(file);
    all["required"] = {"kesto_model", "simulation"};
    all["$defs"] = std::move(definitions);
    return all.dump(2) + "\n";
}

}  // namespace kesto
