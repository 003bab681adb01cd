// A value as written in a model file or a table: what both kinds of file are turned into before they are understood.
#pragma once

#include <string>
#include <vector>

#include "calendar.h"
#include "number_format.h"
#include "place.h"

namespace kesto {

struct Field;

struct Value {
    enum class Kind { boolean, integer, real, text, date, array, table };

    Kind kind = Kind::text;
    bool boolean = false;
    double number = 0;  // of integers too
    std::string text;   // of a table's cell, always: a name may look like a number
    bool fromCell = false;
    DecimalMark decimalMark = DecimalMark::point;  // of the table that the cell is in
    Day day = 0;
    std::vector<Value> items;
    std::vector<Field> fields;  // in the order of the file
    Place place;

    bool isNumber() const { return kind == Kind::integer || kind == Kind::real; }
    bool isText() const { return kind == Kind::text || fromCell; }
    const Value* field(std::string_view name) const;
};

struct Field {
    PlacedText name;
    Value value;
};

// "2 mm" rather than "rain" or "Rain (mm)", which are names of columns.
bool isQuantity(std::string_view text);

// "the text "wc"", "the number 3", "a table": for messages.
std::string describe(const Value& value);

}  // namespace kesto
