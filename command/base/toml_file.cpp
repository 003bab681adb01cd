#include "toml_file.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include <algorithm>
#include <new>
#include <stdexcept>

#include "files.h"
#include "toml_depth.h"

namespace kesto {

namespace {

using File = std::shared_ptr<const std::string>;

Place placeOf(const File& file, const toml::source_region& region) {
    return {file, static_cast<int>(region.begin.line), static_cast<int>(region.begin.column)};
}

Day toDay(const toml::date& date) {
    return dayOf({date.year, date.month, date.day});
}

Value toValue(const File& file, const toml::node& node);

void takeTable(const File& file, const toml::table& table, Value& value) {
    value.kind = Value::Kind::table;
    for (const auto& [key, child] : table) {
        value.fields.push_back({{std::string(key.str()), placeOf(file, key.source())}, toValue(file, child)});
    }
    // toml++ sorts by name; ids and rows follow the order in which the file was written.
    std::stable_sort(value.fields.begin(), value.fields.end(), [](const auto& a, const auto& b) {
        const Place& x = a.name.place;
        const Place& y = b.name.place;
        return x.line != y.line ? x.line < y.line : x.column < y.column;
    });
}

Value toValue(const File& file, const toml::node& node) {
    Value value;
    value.place = placeOf(file, node.source());
    if (const auto* table = node.as_table()) {
        takeTable(file, *table, value);
    } else if (const auto* array = node.as_array()) {
        value.kind = Value::Kind::array;
        for (const toml::node& item : *array) {
            value.items.push_back(toValue(file, item));
        }
    } else if (const auto* text = node.as_string()) {
        value.kind = Value::Kind::text;
        value.text = text->get();
    } else if (const auto* integer = node.as_integer()) {
        value.kind = Value::Kind::integer;
        value.number = static_cast<double>(integer->get());
    } else if (const auto* real = node.as_floating_point()) {
        value.kind = Value::Kind::real;
        value.number = real->get();
    } else if (const auto* boolean = node.as_boolean()) {
        value.kind = Value::Kind::boolean;
        value.boolean = boolean->get();
    } else if (const auto* date = node.as_date()) {
        value.kind = Value::Kind::date;
        value.day = toDay(date->get());
    } else if (const auto* dateTime = node.as_date_time()) {
        value.kind = Value::Kind::date;
        value.day = toDay(dateTime->get().date);
    } else {
        value.kind = Value::Kind::text;
        value.text = "a time of day";
    }
    return value;
}

}  // namespace

std::optional<Value> readTomlText(const std::string& text, const std::string& name, Diagnostics& diagnostics) {
    const File file = std::make_shared<const std::string>(name);
    if (const auto deep = tooDeepAt(text)) {
        diagnostics.error(
            "not-toml", {file, deep->line, deep->column},
            fmt::format("keys and brackets nest deeper than {} levels; a model has no need for it", kDeepestNesting));
        return std::nullopt;
    }
    try {
        const toml::table table = toml::parse(text, name);
        return toValue(file, table);
    } catch (const toml::parse_error& error) {
        diagnostics.error("not-toml", placeOf(file, error.source()),
                          fmt::format("not valid TOML: {}", error.description()));
        return std::nullopt;
    }
}

std::optional<Value> readTomlFile(const std::string& path, Diagnostics& diagnostics) {
    const Place place{std::make_shared<const std::string>(path), 0, 0};
    try {
        return readTomlText(readFile(path, kLargestModel), path, diagnostics);
    } catch (const std::runtime_error& error) {
        diagnostics.error("no-file", place, error.what());
    } catch (const std::bad_alloc&) {
        diagnostics.error("out-of-memory", place, "memory ran out while this file was read");
    }
    return std::nullopt;
}

}  // namespace kesto
