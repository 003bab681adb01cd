#include "model_reader.h"

#include <fmt/format.h>

#include <algorithm>
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

// The tables of a list, or the one table that stands alone.
std::vector<const Value*> tablesOf(Reading& reading, const Value* list, std::string_view key) {
    if (!list) return {};
    if (list->kind == Value::Kind::table) return {list};
    std::vector<const Value*> tables;
    if (list->kind != Value::Kind::array) {
        reading.diagnostics.error("wrong-value", list->place,
                                  fmt::format("{} is {}; expected [[{}]]", key, describe(*list), key));
    }
    for (const Value& item : list->items) {
        if (item.kind == Value::Kind::table) {
            tables.push_back(&item);
        } else {
            reading.diagnostics.error("wrong-value", item.place,
                                      fmt::format("{} holds {}; expected a table", key, describe(item)));
        }
    }
    return tables;
}

using NamedTable = std::pair<PlacedText, const Value*>;

// Those of [brands.NAME].
std::vector<NamedTable> namedTablesOf(Reading& reading, const Value* named, std::string_view key) {
    if (!named) return {};
    std::vector<NamedTable> tables;
    if (named->kind != Value::Kind::table) {
        reading.diagnostics.error("wrong-value", named->place,
                                  fmt::format("{} is {}; expected [{}.NAME]", key, describe(*named), key));
    }
    for (const auto& [name, value] : named->fields) {
        if (value.kind == Value::Kind::table) {
            tables.emplace_back(name, &value);
        } else {
            reading.diagnostics.error(
                "wrong-value", value.place,
                fmt::format("[{}]: {} is {}; expected [{}.{}]", key, name.value, describe(value), key, name.value));
        }
    }
    return tables;
}

void addRows(Reading& reading, const std::vector<Value>& rows, std::vector<NamedTable>& tables) {
    for (const Value& row : rows) {
        if (const Value* name = row.field("name")) {
            tables.emplace_back(PlacedText{name->text, name->place}, &row);
        } else {
            reading.diagnostics.error("missing-key", row.place, "this row has no name");
        }
    }
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

// [series] with what the command line says of it.
Value seriesOf(Reading& reading, const Value* given) {
    Value none;
    none.kind = Value::Kind::table;
    return withSeriesOverrides(given ? *given : none, reading.overrides, reading.diagnostics);
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
    section.allow("tables");     // read with the document
    section.allow("scenarios");  // read before all that they change
    section.allow("accept");     // read once the components are known
}

// What refers to a name comes after what bears it.
void readNetwork(Reading& reading, const ModelDocument& document, Section& section) {
    const auto tables = [&](const char* key) {
        auto found = tablesOf(reading, section.find(key), key);
        for (const Value& row : document.rowsOf(key)) {
            found.push_back(&row);
        }
        return found;
    };
    const auto namedTables = [&](const char* key) {
        auto found = namedTablesOf(reading, section.find(key), key);
        addRows(reading, document.rowsOf(key), found);
        return found;
    };
    auto brands = namedTables("brands");
    std::erase_if(brands, [&](const NamedTable& brand) { return !addBrand(reading, brand.first); });
    for (const auto& [name, table] : namedTables("groups")) {
        readGroup(reading, name, *table);
    }
    const auto components = tables("components");
    for (const Value* table : components) {
        readComponent(reading, *table);
    }
    const auto types = typesOfBrands(reading.model);
    for (const auto& [name, table] : brands) {
        readBrand(reading, name, *table, types);
    }
    for (const Value* table : components) {
        readSplits(reading, *table);
    }
    for (const Value& row : document.rowsOf("splits")) {
        readSplitRow(reading, row);
    }
    for (const Value* table : tables("connections")) {
        readConnection(reading, *table);
    }
}

void readContents(Reading& reading, const ModelDocument& document) {
    Section section(document.file, "the model", reading.diagnostics);
    readHead(reading, section);
    const Value economics = economicsOf(reading, section.find("economics"));
    const Value given = seriesOf(reading, section.find("series"));
    const auto series = tablesOf(reading, &given, "series");
    for (const Value* table : series) {
        readSeriesFile(reading, *table);
    }
    readNetwork(reading, document, section);
    for (const Value* table : series) {
        readSeries(reading, *table);
    }
    finishSeries(reading);
    finishEconomics(reading, economics);
    section.finish();
    if (reading.model.components.empty() && !reading.diagnostics.hasErrors()) {
        reading.diagnostics.error("no-components", document.file.place,
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
