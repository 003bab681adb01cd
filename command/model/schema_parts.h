// Parts of the JSON Schema; schema.cpp puts them together.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "catalogue.h"

namespace kesto::schema {

using Json = nlohmann::ordered_json;

// A number, or a text with a number, a blank and a unit that can be turned into `unit`.
Json quantity(std::string_view unit, std::string_view meaning = {});

// A source of daily values: a quantity, the name of a column, or a table. `isAssigned`: it says whom it is for.
Json sourceOf(std::string_view unit, std::string_view meaning = {}, bool isAssigned = false);

// The same by reference to the definition that stands for this unit, since there are many.
Json source(std::string_view unit, std::string_view meaning = {});
std::string sourceName(std::string_view unit);

// A table with these keys and no others.
Json closedTable(Json properties);

// A list of such items, or one that stands alone.
Json oneOrMany(const Json& item);

Json text(std::string_view meaning = {});

// A sum that is not negative: a number, or a text that may name the currency and a unit.
Json money(std::string_view meaning);

// What brands and components cost.
void addCapital(Json& keys);

// [[components]] of one type.
Json component(const Type& type);

// What the type of a component can be called: name, tag, the engine's codes.
Json namesOf(const Type& type);

}  // namespace kesto::schema
