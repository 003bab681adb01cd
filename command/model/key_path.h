// Keys that lead to a value of a model, wherever it is given: simulation.end, groups.house.uses.1, tank.size. Names
// with dots stand in quotes: components."my.tank".size.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "value.h"

namespace kesto {

using KeyPath = std::vector<std::string>;

// Tables of a model that a path can begin with; any other first name is a component's.
bool isModelTable(std::string_view name);

// From the text of a whole path: of a component with the table "components" before it. None when it is none.
std::optional<KeyPath> parseKeyPath(std::string_view text);

// A component, brand or group needs a key after its name; the other tables have their keys at once.
bool leadsToValue(const KeyPath& path);

// As a person would write it, without "components" where it is not needed.
std::string toText(const KeyPath& path);

// Where the path ends in a text such as tank.size=3: at the first equals sign that is not within quotes.
std::size_t endOfKeyPath(std::string_view text);

// Whether a component's name alone, before a dot, would lead elsewhere.
bool needsQuotes(std::string_view name);

// Puts a value at the end of a path, counted from `first`, into a table, which gets the tables on the way; `keyPlace`
// is where the path stands. A series that is given in short becomes a table: { column = "rain" }, { value = 3 }; and
// has one of column, value, monthly and weekly.
void putAt(Value& table, const KeyPath& path, std::size_t first, const Value& value, const Place& keyPlace);

// Paths that are put in order, and which of them would be lost.
class GivenPaths {
  public:
    // An earlier path whose value this one replaces: the same, one within it, or another that gives the same series.
    std::optional<KeyPath> add(const KeyPath& path);

  private:
    std::optional<KeyPath> replacedBy(const KeyPath& path) const;

    std::set<KeyPath> paths_;
};

}  // namespace kesto
