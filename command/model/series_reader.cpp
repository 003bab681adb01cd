// Reads sources of values, and [series].
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "files.h"
#include "number_format.h"
#include "reader_parts.h"

namespace kesto {

namespace {

bool readPattern(const Value& value, std::size_t length, std::string_view unit, const std::string& what,
                 Diagnostics& diagnostics, std::vector<double>& pattern) {
    if (value.kind != Value::Kind::array || value.items.size() != length) {
        diagnostics.error("wrong-value", value.place,
                          fmt::format("{} is {} of {}; expected a list of {} numbers", what, describe(value),
                                      value.items.size(), length));
        return false;
    }
    for (const Value& item : value.items) {
        const auto number = readQuantity(item, unit, what, diagnostics);
        if (!number) return false;
        pattern.push_back(*number);
    }
    return true;
}

bool readUnit(Section& section, std::string_view unit, Conversion& result) {
    const auto found = section.text("unit");
    if (!found) return true;
    if (const auto factor = conversion(found->value, unit)) {
        result = *factor;
        return true;
    }
    section.diagnostics().error("wrong-value", found->place,
                                fmt::format("{}: unit \"{}\" cannot be turned into {}; expected {}", section.what(),
                                            found->value, unit, listOf(unitsFor(unit))));
    return false;
}

// After the conversion of units, so that the offset is in the unit of the series.
void readScale(Section& section, std::string_view unit, SeriesSource& source) {
    if (const auto scale = section.quantity("scale", "-")) source.scale = scale->value;
    const Value* offset = section.find("offset");
    if (!offset) return;
    if (offset->isNumber()) {
        source.offset = offset->number;
    } else {
        section.wrong(*offset, "offset", unit.empty() ? "a number" : fmt::format("a number of {}", unit));
    }
}

bool readColumn(Reading& reading, Section& section, const Value& column, const std::string& what,
                SeriesSource& source) {
    source.kind = SeriesSource::Kind::column;
    source.column = column.text;
    source.table = reading.defaultTable;
    const auto time = section.text("time");
    if (const auto file = section.text("file")) source.table = reading.addTable(*file, time ? time->value : "");
    if (source.table >= 0) return true;
    reading.diagnostics.error("missing-key", column.place,
                              fmt::format("{}: column \"{}\" of which file? expected a key file here or "
                                          "in [series]",
                                          what, column.text));
    return false;
}

// What fits single precision as it stands may not do so in the unit of the series.
bool isFinite(const SeriesSource& source, const std::string& what, Diagnostics& diagnostics) {
    std::vector<double> values = source.pattern;
    values.push_back(source.constant);
    for (const double value : values) {
        if (fitsSinglePrecision(source.valueOf(value))) continue;
        diagnostics.error("wrong-value", source.place,
                          fmt::format("{} holds {}, which is beyond single precision, 3.4e38, in the unit of "
                                      "the series",
                                      what, value));
        return false;
    }
    return true;
}

SourceIndex readSourceTable(Reading& reading, const Value& value, std::string_view unit, const std::string& what,
                            const std::vector<std::string_view>& otherKeys) {
    Section section(value, what, reading.diagnostics);
    for (const std::string_view key : otherKeys) {
        section.allow(key);
    }
    SeriesSource source;
    source.place = value.place;
    const Value* constant = section.find("value");
    const Value* column = section.find("column");
    const Value* monthly = section.find("monthly");
    const Value* weekly = section.find("weekly");
    bool good = readUnit(section, unit, source.conversion);
    readScale(section, unit, source);
    const int given = (constant != nullptr) + (column != nullptr) + (monthly != nullptr) + (weekly != nullptr);
    if (given != 1) {
        reading.diagnostics.error(
            "wrong-value", value.place,
            fmt::format("{} has {} of the keys value, column, monthly and weekly; expected exactly one", what, given));
        good = false;
    } else if (constant) {
        const auto number = readQuantity(*constant, unit, what + ": value", reading.diagnostics);
        good = good && number;
        source.constant = number.value_or(0);
    } else if (column) {
        const auto name = section.text("column");
        good = name && readColumn(reading, section, *column, what, source) && good;
    } else {
        source.kind = monthly ? SeriesSource::Kind::monthly : SeriesSource::Kind::weekly;
        good = readPattern(monthly ? *monthly : *weekly, monthly ? 12 : 7, unit, what, reading.diagnostics,
                           source.pattern) &&
               good;
    }
    section.allow("file");
    section.allow("time");
    section.finish();
    if (!good || !isFinite(source, what, reading.diagnostics)) return kBadSource;
    return reading.model.addSource(std::move(source));
}

Place placeOf(const Model& model, SourceIndex source) {
    return source < 0 ? Place{} : model.sources[static_cast<std::size_t>(source)].place;
}

// Files a source under the groups or components that it is for.
void assign(Reading& reading, SeriesKind kind, const PlacedText& name, SourceIndex source) {
    Model& model = reading.model;
    const int group = model.findGroup(name.value);
    const int component = model.findComponent(name.value);
    SourceIndex* slot = nullptr;
    if (group >= 0) slot = &model.groups[static_cast<std::size_t>(group)].series[kind];
    if (group < 0 && component >= 0) slot = &model.components[static_cast<std::size_t>(component)].series[kind];
    if (!slot) {
        const auto names = [&] {
            std::vector<std::string_view> all = model.groupNames();
            const auto components = model.componentNames();
            all.insert(all.end(), components.begin(), components.end());
            return all;
        };
        reading.diagnostics.error(
            "unknown-name", name.place,
            fmt::format("[series] {}: \"{}\" is neither a group nor a component{}", info(kind).name, name.value,
                        reading.diagnostics.suggest(name.value, names)));
        return;
    }
    if (*slot != kNoSource) {
        reading.diagnostics.error("repeated", name.place,
                                  fmt::format("[series] {}: \"{}\" has got this series before, at {}", info(kind).name,
                                              name.value, toString(placeOf(model, *slot))));
        return;
    }
    *slot = source;
}

void readAssignment(Reading& reading, SeriesKind kind, const Value& value) {
    const std::string what = fmt::format("[series] {}", info(kind).name);
    const SourceIndex source = readSource(reading, value, info(kind).unit, what, {"for"});
    const Value* targets = value.kind == Value::Kind::table ? value.field("for") : nullptr;
    if (!targets) {
        reading.forAll.emplace_back(kind, source);
        return;
    }
    std::vector<Value> names = targets->items;
    if (targets->kind == Value::Kind::text) names = {*targets};
    for (const Value& name : names) {
        if (!name.isText()) {
            reading.diagnostics.error(
                "wrong-value", name.place,
                fmt::format("{}: for holds {}; expected names of groups or components", what, describe(name)));
            continue;
        }
        assign(reading, kind, {name.text, name.place}, source);
    }
    if (names.empty()) {
        reading.diagnostics.error("wrong-value", targets->place,
                                  fmt::format("{}: for is {}; expected a list of names", what, describe(*targets)));
    }
}

// A series that says nothing of whom it is for goes to all that have none of their own.
void assignToAll(Model& model, SeriesKind kind, SourceIndex source) {
    for (Group& group : model.groups) {
        if (group.series[kind] == kNoSource) group.series[kind] = source;
    }
    for (Component& component : model.components) {
        const bool needed =
            std::any_of(component.type->series.begin(), component.type->series.end(),
                        [kind](const SeriesNeed& need) { return need.kind == kind && need.filing == Filing::own; });
        if (needed && component.series[kind] == kNoSource) component.series[kind] = source;
    }
}

}  // namespace

std::string pathBeside(const std::string& modelPath, const std::string& file) {
    const std::filesystem::path path = pathOf(file), folder = pathOf(modelPath).parent_path();
    return path.is_absolute() || folder.empty() ? file : nameOf((folder / path).lexically_normal());
}

int Reading::addTable(const PlacedText& file, const std::string& timeColumn) {
    const std::string path = pathBeside(model.path, file.value);
    for (std::size_t i = 0; i < model.tables.size(); ++i) {
        if (model.tables[i].path == path && model.tables[i].timeColumn == timeColumn) return static_cast<int>(i);
    }
    model.tables.push_back({path, timeColumn, file.place});
    return static_cast<int>(model.tables.size()) - 1;
}

SourceIndex readSource(Reading& reading, const Value& value, std::string_view unit, const std::string& what,
                       std::vector<std::string_view> otherKeys) {
    if (value.kind == Value::Kind::table) return readSourceTable(reading, value, unit, what, otherKeys);
    SeriesSource source;
    source.place = value.place;
    if (value.kind == Value::Kind::text && !isQuantity(value.text) && !value.fromCell) {
        source.kind = SeriesSource::Kind::column;
        source.column = value.text;
        source.table = reading.defaultTable;
        if (source.table < 0) {
            reading.diagnostics.error("missing-key", value.place,
                                      fmt::format("{}: column \"{}\" of which file? expected a number, or "
                                                  "a file in [series]",
                                                  what, value.text));
            return kBadSource;
        }
        return reading.model.addSource(std::move(source));
    }
    const auto number = readQuantity(value, unit, what, reading.diagnostics);
    if (!number) return kBadSource;
    source.constant = *number;
    return reading.model.addSource(std::move(source));
}

void readSeriesFile(Reading& reading, const Value& table) {
    Section section(table, "[series]", reading.diagnostics);
    const auto file = section.text("file");
    const auto time = section.text("time");
    if (file) {
        const int index = reading.addTable(*file, time ? time->value : "");
        if (reading.defaultTable < 0) reading.defaultTable = index;
    }
}

void readSeries(Reading& reading, const Value& table) {
    Section section(table, "[series]", reading.diagnostics);
    const auto file = section.text("file");
    const auto time = section.text("time");
    const int before = reading.defaultTable;
    if (file) reading.defaultTable = reading.addTable(*file, time ? time->value : "");
    for (const std::string_view name : seriesKindNames()) {
        const SeriesKind kind = *findSeriesKind(name);
        if (kind == SeriesKind::uses) continue;  // eleven of them: they stand in [groups]
        const Value* value = section.find(name);
        if (!value) continue;
        if (value->kind != Value::Kind::array) {
            readAssignment(reading, kind, *value);
            continue;
        }
        for (const Value& item : value->items) {
            readAssignment(reading, kind, item);
        }
    }
    section.finish();
    reading.defaultTable = before;
}

void finishSeries(Reading& reading) {
    SourcesByKind seen;
    for (const auto& [kind, source] : reading.forAll) {
        if (seen[kind] != kNoSource) {
            reading.diagnostics.error(
                "repeated", placeOf(reading.model, source),
                fmt::format("[series] {} is given twice for all, first at {}; expected for = [...] with one of them",
                            info(kind).name, toString(placeOf(reading.model, seen[kind]))));
            continue;
        }
        seen[kind] = source;
        assignToAll(reading.model, kind, source);
    }
}

}  // namespace kesto
