#include "key_path.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace kesto {

namespace {

constexpr std::array<std::string_view, 6> kTables{"simulation", "economics", "series",
                                                  "brands",     "groups",    "components"};
constexpr std::array<std::string_view, 4> kGivers{"column", "value", "monthly",
                                                  "weekly"};  // of a series, one at a time

void set(Value& table, const std::string& key, const Value& value, const Place& keyPlace) {
    std::erase_if(table.fields, [&](const Field& field) { return field.name.value == key; });
    table.fields.push_back({{key, keyPlace}, value});
}

// What stands in short under a key, as the table that it is short for.
Value asTable(const Value& value) {
    if (value.kind == Value::Kind::table) return value;
    Value table;
    table.kind = Value::Kind::table;
    table.place = value.place;
    if (value.kind == Value::Kind::array) {  // the eleven uses
        for (std::size_t i = 0; i < value.items.size(); ++i) {
            set(table, std::to_string(i + 1), value.items[i], value.items[i].place);
        }
    } else {
        const bool isColumn = value.kind == Value::Kind::text && !value.fromCell && !isQuantity(value.text);
        set(table, isColumn ? "column" : "value", value, value.place);
    }
    return table;
}

bool isGiver(std::string_view key) {
    return std::find(kGivers.begin(), kGivers.end(), key) != kGivers.end();
}

}  // namespace

bool isModelTable(std::string_view name) {
    return std::find(kTables.begin(), kTables.end(), name) != kTables.end();
}

bool leadsToValue(const KeyPath& path) {
    const bool isNamed = path.front() == "brands" || path.front() == "groups" || path.front() == "components";
    return path.size() > (isNamed ? 2 : 1);
}

std::size_t endOfKeyPath(std::string_view text) {
    bool isQuoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') isQuoted = !isQuoted;
        if (text[i] == '=' && !isQuoted) return i;
    }
    return std::string_view::npos;
}

std::optional<KeyPath> parseKeyPath(std::string_view text) {
    KeyPath path;
    bool isFirstQuoted = false;
    for (;;) {
        const bool isQuoted = text.starts_with('"');
        const std::size_t end = isQuoted ? text.find('"', 1) : text.find('.');
        if (isQuoted && end == std::string_view::npos) return std::nullopt;
        path.emplace_back(isQuoted ? text.substr(1, end - 1) : text.substr(0, end));
        if (path.back().empty()) return std::nullopt;
        if (path.size() == 1) isFirstQuoted = isQuoted;
        text.remove_prefix(std::min(text.size(), isQuoted ? end + 1 : end));
        if (text.empty()) break;
        if (!text.starts_with('.')) return std::nullopt;
        text.remove_prefix(1);
    }
    if (isFirstQuoted || !isModelTable(path.front())) path.insert(path.begin(), "components");
    return path.size() < 2 ? std::nullopt : std::optional(path);
}

bool needsQuotes(std::string_view name) {
    return name.find('.') != std::string_view::npos;
}

std::string toText(const KeyPath& path) {
    const bool isShort = path.front() == "components" && path.size() > 1 && !isModelTable(path[1]);
    std::string text;
    for (std::size_t i = isShort ? 1 : 0; i < path.size(); ++i) {
        text += text.empty() ? "" : ".";
        text += needsQuotes(path[i]) ? fmt::format("\"{}\"", path[i]) : path[i];
    }
    return text;
}

std::optional<KeyPath> GivenPaths::add(const KeyPath& path) {
    auto replaced = replacedBy(path);
    const bool isNamed = path.front() == "brands" || path.front() == "groups" || path.front() == "components";
    for (const std::string_view giver : kGivers) {
        if (replaced || !isGiver(path.back()) || path.size() <= (isNamed ? 3 : 2)) break;
        KeyPath other = path;
        other.back() = giver;
        replaced = replacedBy(other);
    }
    paths_.insert(path);
    return replaced;
}

std::optional<KeyPath> GivenPaths::replacedBy(const KeyPath& path) const {
    const auto next = paths_.lower_bound(path);  // what lies within a path follows it
    const bool isWithin =
        next != paths_.end() && next->size() >= path.size() && std::equal(path.begin(), path.end(), next->begin());
    return isWithin ? std::optional(*next) : std::nullopt;
}

void putAt(Value& table, const KeyPath& path, std::size_t first, const Value& value, const Place& keyPlace) {
    const std::string& key = path[first];
    if (first + 1 == path.size()) return set(table, key, value, keyPlace);
    const Value* const known = table.field(key);
    Value inner = known ? asTable(*known) : Value{};
    inner.kind = Value::Kind::table;
    if (!known) inner.place = keyPlace;
    if (isGiver(path[first + 1])) {
        std::erase_if(inner.fields, [](const Field& field) { return isGiver(field.name.value); });
    }
    putAt(inner, path, first + 1, value, keyPlace);
    set(table, key, inner, keyPlace);
}

}  // namespace kesto
