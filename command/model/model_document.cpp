#include "model_document.h"

#include <fmt/format.h>

#include <algorithm>

#include "control_characters.h"
#include "csv_file.h"
#include "reader_parts.h"
#include "section.h"
#include "toml_file.h"

namespace kesto {

namespace {

// A row of a table as the value that the same thing would have in TOML; empty cells are left out.
Value rowOf(const CsvFile& csv, std::size_t row) {
    Value table;
    table.kind = Value::Kind::table;
    for (std::size_t column = 0; column < csv.columns().size(); ++column) {
        const std::string_view cell = csv.cell(row, column);
        if (cell.empty()) continue;
        Value value;
        value.fromCell = true;
        value.text = cell;
        value.place = csv.placeOf(row, column);
        value.decimalMark = csv.decimalMark();
        if (const auto number = readNumber(cell, csv.decimalMark())) {
            value.kind = Value::Kind::real;
            value.number = *number;
        } else if (cell == "true" || cell == "false") {
            value.kind = Value::Kind::boolean;
            value.boolean = cell == "true";
        }
        table.fields.push_back({{csv.columns()[column], value.place}, value});
    }
    table.place = csv.placeOf(row, 0);
    return table;
}

}  // namespace

void noteThousands(const CsvFile& csv, Diagnostics& diagnostics) {
    for (std::size_t row = 0; row < csv.rows(); ++row) {
        for (std::size_t column = 0; column < csv.columns().size(); ++column) {
            const std::string_view cell = csv.cell(row, column);
            if (!hasThousands(cell, csv.decimalMark())) continue;
            diagnostics.warning("read-as", csv.placeOf(row, column),
                                fmt::format("column \"{}\": \"{}\" is read as {}", csv.columns()[column], cell,
                                            *readNumber(cell, csv.decimalMark())));
            return;
        }
    }
}

namespace {

// [tables] and the contents of its files, turned into the same values as the rest of the model.
void readTables(ModelDocument& document, Diagnostics& diagnostics) {
    const Value* tables = document.file.field("tables");
    if (!tables) return;
    if (tables->kind != Value::Kind::table) {
        diagnostics.error("wrong-value", tables->place,
                          fmt::format("tables is {}; expected a table [tables]", describe(*tables)));
        return;
    }
    Section section(*tables, "[tables]", diagnostics);
    for (const char* key : {"brands", "groups", "components", "splits", "connections"}) {
        const auto file = section.text(key);
        if (!file) continue;
        const std::string path = pathBeside(document.path, file->value);
        document.tableFiles.push_back(path);
        const auto csv = CsvFile::read(path, file->place, diagnostics);
        if (!csv || !csv->isWhole()) document.isWhole = false;
        if (!csv) continue;
        csv->noteUnderstood({}, diagnostics);
        noteThousands(*csv, diagnostics);
        std::vector<Value>& rows = document.rows[key];
        for (std::size_t row = 0; row < csv->rows(); ++row) {
            rows.push_back(rowOf(*csv, row));
            refuseControlCharacters(rows.back(), diagnostics);
        }
    }
    section.finish();
}

// A group can be given partly in the file and partly in a row of a table.
void joinGroups(ModelDocument& document, Diagnostics& diagnostics) {
    const auto groups = std::find_if(document.file.fields.begin(), document.file.fields.end(),
                                     [](const Field& field) { return field.name.value == "groups"; });
    if (groups == document.file.fields.end()) return;
    std::vector<Field>& known = groups->value.fields;
    std::erase_if(document.rows["groups"], [&](const Value& row) {
        const Value* name = row.field("name");
        const auto group = std::find_if(known.begin(), known.end(), [&](const Field& field) {
            return name && field.name.value == name->text && field.value.kind == Value::Kind::table;
        });
        if (group == known.end() || group->value.field("name")) return false;
        for (const Field& cell : row.fields) {
            if (const Value* other = group->value.field(cell.name.value)) {
                diagnostics.error("repeated", cell.value.place,
                                  fmt::format("group \"{}\": {} stands here and at {}; expected it once", name->text,
                                              cell.name.value, toString(other->place)));
            } else {
                group->value.fields.push_back(cell);
            }
        }
        return true;
    });
}

}  // namespace

const std::vector<Value>& ModelDocument::rowsOf(std::string_view key) const {
    static const std::vector<Value> noRows;
    const auto found = rows.find(key);
    return found == rows.end() ? noRows : found->second;
}

std::optional<ModelDocument> readDocument(const std::string& path, Diagnostics& diagnostics) {
    auto file = readTomlFile(path, diagnostics);
    if (!file) return std::nullopt;
    refuseControlCharacters(*file, diagnostics);
    ModelDocument document{path, std::move(*file), {}, {}};
    readTables(document, diagnostics);
    joinGroups(document, diagnostics);
    return document;
}

}  // namespace kesto
