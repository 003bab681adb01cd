#include "model_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <set>

#include "ids.h"
#include "reader_parts.h"
#include "scenarios.h"

namespace kesto {

namespace {

void readSimulation(Reading& reading, const Value& original) {
    const Value table = withOverrides(original, {"simulation"}, reading.overrides);
    Section section(table, "[simulation]", reading.diagnostics);
    Simulation& simulation = reading.model.simulation;
    simulation.place = table.place;
    const auto start = section.date("start");
    const auto end = section.date("end");
    if (start) simulation.start = start->value;
    if (end) simulation.end = end->value;
    simulation.isDated = start && end;
    // Tables without dates begin with the model's own first day, whichever day the run begins with.
    const Value* own = original.field("start");
    simulation.tableStart = own && own->kind == Value::Kind::date ? own->day : simulation.start;
    if (start && end && end->value < start->value) {
        reading.diagnostics.error("wrong-value", end->place,
                                  fmt::format("[simulation]: end is {}; expected a day not before start, {}",
                                              toText(end->value), toText(start->value)));
    }
    if (const auto latitude = section.quantity("latitude", "degrees")) {
        simulation.latitude = latitude->value;
        if (latitude->value < -90 || latitude->value > 90) {
            reading.diagnostics.error("wrong-value", latitude->place,
                                      fmt::format("[simulation]: latitude is {}; expected -90 to 90 "
                                                  "degrees, north positive",
                                                  latitude->value));
        }
    }
    if (const auto step = section.quantity("time_step", "d")) {
        if (step->value > 0) simulation.timeStep = step->value;
        if (step->value <= 0) {
            reading.diagnostics.error("wrong-value", step->place,
                                      fmt::format("[simulation]: time_step is {}; expected days above 0", step->value));
        }
    }
    simulation.stopOnInfeasible = section.boolean("stop_on_infeasible").value_or(false);
    simulation.traceSources = section.boolean("trace_sources").value_or(false);
    section.finish();
}

// Calls `read` for each table of a list, or for the one table that stands alone.
void forEachTable(Reading& reading, const Value* list, std::string_view key,
                  const std::function<void(const Value&)>& read) {
    if (!list) return;
    std::vector<const Value*> items;
    if (list->kind == Value::Kind::table) items.push_back(list);
    for (const Value& item : list->items) {
        items.push_back(&item);
    }
    if (items.empty() && list->kind != Value::Kind::array) {
        reading.diagnostics.error("wrong-value", list->place,
                                  fmt::format("{} is {}; expected [[{}]]", key, describe(*list), key));
    }
    for (const Value* item : items) {
        if (item->kind == Value::Kind::table) {
            read(*item);
        } else {
            reading.diagnostics.error("wrong-value", item->place,
                                      fmt::format("{} holds {}; expected a table", key, describe(*item)));
        }
    }
}

// Calls `read` for each named table: [brands.NAME].
void forEachNamed(Reading& reading, const Value* table, std::string_view key,
                  const std::function<void(const PlacedText&, const Value&)>& read) {
    if (!table) return;
    for (const auto& [name, value] : table->fields) {
        if (value.kind == Value::Kind::table) {
            read(name, value);
        } else {
            reading.diagnostics.error(
                "wrong-value", value.place,
                fmt::format("[{}]: {} is {}; expected [{}.{}]", key, name.value, describe(value), key, name.value));
        }
    }
}

void readNamedRow(Reading& reading, const Value& row,
                  const std::function<void(const PlacedText&, const Value&)>& read) {
    const Value* name = row.field("name");
    if (!name) {
        reading.diagnostics.error("missing-key", row.place, "this row has no name");
        return;
    }
    read({name->text, name->place}, row);
}

// [economics] with what the command line says of it.
Value economicsOf(Reading& reading, const Value* given) {
    Value none;
    none.kind = Value::Kind::table;
    if (given && given->kind != Value::Kind::table) {
        reading.diagnostics.error("wrong-value", given->place,
                                  fmt::format("economics is {}; expected a table [economics]", describe(*given)));
        given = nullptr;
    }
    Value table = withOverrides(given ? *given : none, {"economics"}, reading.overrides);
    if (given || !table.fields.empty()) readEconomics(reading, table);
    return table;
}

// What stands above all tables, and when the model runs.
void readHead(Reading& reading, Section& section) {
    if (const Value* version = section.require("kesto_model", "1, the version of this format")) {
        if (!version->isNumber() || version->number != 1) section.wrong(*version, "kesto_model", "1");
    }
    if (const auto title = section.text("title")) reading.model.title = title->value;
    if (const auto place = section.text("place")) reading.model.site = place->value;
    if (const Value* simulation = section.require("simulation", "a table [simulation]")) {
        if (simulation->kind == Value::Kind::table)
            readSimulation(reading, *simulation);
        else
            section.wrong(*simulation, "simulation", "a table [simulation]");
    }
}

void readContents(Reading& reading, const ModelDocument& document) {
    const Value& file = document.file;
    Section section(file, "the model", reading.diagnostics);
    readHead(reading, section);
    section.allow("accept");  // read once the components are known
    section.allow("tables");  // read with the document
    std::vector<std::pair<PlacedText, const Value*>> brands;
    const Value economics = economicsOf(reading, section.find("economics"));
    const auto brand = [&](const PlacedText& name, const Value& table) {
        if (addBrand(reading, name)) brands.emplace_back(name, &table);
    };
    const auto group = [&](const PlacedText& name, const Value& table) { readGroup(reading, name, table); };
    const auto component = [&](const Value& table) { readComponent(reading, table); };
    const auto splits = [&](const Value& table) { readSplits(reading, table); };
    const auto connection = [&](const Value& table) { readConnection(reading, table); };
    section.allow("scenarios");  // read before all that they change
    const Value* given = section.find("series");
    Value none;
    none.kind = Value::Kind::table;
    const Value merged = withSeriesOverrides(given ? *given : none, reading.overrides, reading.diagnostics);
    const Value* series = given || !merged.fields.empty() ? &merged : nullptr;

    forEachTable(reading, series, "series", [&](const Value& table) { readSeriesFile(reading, table); });
    forEachNamed(reading, section.find("brands"), "brands", brand);
    for (const Value& row : document.rowsOf("brands"))
        readNamedRow(reading, row, brand);
    forEachNamed(reading, section.find("groups"), "groups", group);
    for (const Value& row : document.rowsOf("groups"))
        readNamedRow(reading, row, group);
    forEachTable(reading, section.find("components"), "components", component);
    for (const Value& row : document.rowsOf("components"))
        component(row);
    const auto types = typesOfBrands(reading.model);
    for (const auto& [name, table] : brands)
        readBrand(reading, name, *table, types);
    forEachTable(reading, section.find("components"), "components", splits);
    for (const Value& row : document.rowsOf("splits"))
        readSplitRow(reading, row);
    forEachTable(reading, section.find("connections"), "connections", connection);
    for (const Value& row : document.rowsOf("connections"))
        connection(row);
    forEachTable(reading, series, "series", [&](const Value& table) { readSeries(reading, table); });
    finishSeries(reading);
    finishEconomics(reading, economics);
    section.finish();
    if (reading.model.components.empty() && !reading.diagnostics.hasErrors()) {
        reading.diagnostics.error("no-components", file.place,
                                  "the model has no components; expected at least one [[components]]");
    }
}

// What --set can name.
std::vector<std::string> targetsOf(const Model& model) {
    std::vector<std::string> targets{"simulation", "economics"};
    for (const std::string_view name : model.brandNames()) {
        targets.push_back(toText({"brands", std::string(name)}));
    }
    for (const std::string_view name : model.groupNames()) {
        targets.push_back(toText({"groups", std::string(name)}));
    }
    for (const std::string_view name : model.componentNames()) {
        targets.push_back(toText({"components", std::string(name)}));
    }
    return targets;
}

}  // namespace

Model readModel(const ModelDocument& document, const ReadOptions& options, const std::vector<Override>& more,
                Diagnostics& diagnostics) {
    Model model;
    model.path = document.path;
    model.tableFiles = document.tableFiles;
    model.isNetworkComplete = document.isWhole;
    Reading reading{model, diagnostics};
    std::vector<std::string> asked = options.scenarios;
    if (!options.baseline.empty()) asked.push_back(options.baseline);
    const auto scenarios = readScenarios(reading, document.file.field("scenarios"), asked);
    const auto add = [&](const std::vector<Override>& overrides) {
        reading.overrides.insert(reading.overrides.end(), overrides.begin(), overrides.end());
    };
    for (std::size_t i = 0; i < options.scenarios.size(); ++i) {
        add(scenarios[i]);
    }
    add(parseOverrides(options.set, diagnostics));
    const auto setDay = [&](const char* key, const std::string& option, const std::string& day) {
        if (!day.empty()) reading.overrides.push_back(overrideOf({"simulation", key}, day, option + day));
    };
    setDay("start", "--from ", options.from);
    setDay("end", "--to ", options.to);
    add(more);
    if (!options.baseline.empty()) add(scenarios.back());
    readContents(reading, document);
    readAccepted(reading, document.file.field("accept"), options.accept);
    reportUnused(reading.overrides, targetsOf(model), diagnostics);
    numberModel(model, diagnostics);
    return model;
}

std::set<KeyPath> pathsOfScenario(const ModelDocument& document, const std::string& scenario) {
    Model model;
    Diagnostics ignored;
    Reading reading{model, ignored};
    const auto chosen = readScenarios(reading, document.file.field("scenarios"), {scenario});
    std::set<KeyPath> paths;
    for (const Override& one : chosen.front()) {
        paths.insert(one.path);
    }
    return paths;
}

std::optional<Model> readModel(const std::string& path, Diagnostics& diagnostics, const ReadOptions& options) {
    const auto document = readDocument(path, diagnostics);
    if (!document) return std::nullopt;
    return readModel(*document, options, {}, diagnostics);
}

}  // namespace kesto
