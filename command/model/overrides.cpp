#include "overrides.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "control_characters.h"
#include "display.h"
#include "toml_depth.h"
#include "toml_file.h"

namespace kesto {

// Values of the command line have no line in a file: all of them carry the argument itself as their place.
void setPlace(Value& value, const Place& place) {
    value.place = place;
    for (Value& item : value.items) {
        setPlace(item, place);
    }
    for (Field& field : value.fields) {
        field.name.place = place;
        setPlace(field.value, place);
    }
}

namespace {

constexpr std::size_t kLongestShown = 200;  // of an argument, in messages

Value parseValue(const std::string& text, const Place& place) {
    Diagnostics ignored;
    const auto parsed = readTomlText("x = " + text, "", ignored);
    Value value;
    value.text = text;
    if (parsed && parsed->fields.size() == 1) value = parsed->fields.front().value;
    setPlace(value, place);
    return value;
}

}  // namespace

Override overrideOf(KeyPath path, const std::string& value, const std::string& argument) {
    const Place place{std::make_shared<const std::string>(shortened(argument, kLongestShown)), 0, 0};
    return {std::move(path), parseValue(value, place), place};
}

void refuseUnfit(const Override& one, const std::string& text, Diagnostics& diagnostics) {
    refuseControlCharacters(one.value, diagnostics);
    if (!tooDeepAt(text)) return;
    diagnostics.error("wrong-value", one.value.place,
                      fmt::format("the value nests deeper than {} levels", kDeepestNesting));
}

std::vector<Override> parseOverrides(const std::vector<std::string>& texts, Diagnostics& diagnostics) {
    std::vector<Override> overrides;
    for (const std::string& text : texts) {
        const std::string argument = "--set " + text;
        const std::size_t equals = endOfKeyPath(text);
        auto path = equals == std::string::npos ? std::nullopt : parseKeyPath(text.substr(0, equals));
        if (!path || !leadsToValue(*path)) {
            const std::string shown = shortened(argument, kLongestShown);
            diagnostics.error("wrong-value", {std::make_shared<const std::string>(shown), 0, 0},
                              "expected COMPONENT.KEY=VALUE, brands.NAME.KEY=VALUE, groups.NAME.KEY=VALUE, "
                              "series.KEY=VALUE, economics.KEY=VALUE or simulation.KEY=VALUE");
            continue;
        }
        const Override one = overrideOf(std::move(*path), text.substr(equals + 1), argument);
        refuseUnfit(one, text.substr(equals + 1), diagnostics);
        overrides.push_back(one);
    }
    return overrides;
}

Value withOverrides(const Value& table, const KeyPath& target, std::vector<Override>& overrides) {
    Value merged = table;
    for (Override& one : overrides) {
        const bool isWithin =
            one.path.size() > target.size() && std::equal(target.begin(), target.end(), one.path.begin());
        if (!isWithin) continue;
        one.used = true;
        putAt(merged, one.path, target.size(), one.value, one.keyPlace);
    }
    return merged;
}

namespace {

// Of several tables [series] the one in which a key stands; null: none or several do.
Value* seriesWith(Value& series, const std::string& key) {
    if (series.kind == Value::Kind::table) return &series;
    Value* found = nullptr;
    for (Value& item : series.items) {
        if (series.items.size() > 1 && !item.field(key)) continue;
        if (found) return nullptr;
        found = &item;
    }
    return found;
}

// A list of one, which says whom the series is for, is as good as what it holds.
bool openList(Value& table, const std::string& key) {
    for (Field& field : table.fields) {
        if (field.name.value != key || field.value.kind != Value::Kind::array) continue;
        if (field.value.items.size() != 1) return false;
        field.value = Value(field.value.items.front());
    }
    return true;
}

}  // namespace

Value withSeriesOverrides(const Value& series, std::vector<Override>& overrides, Diagnostics& diagnostics) {
    Value merged = series;
    for (Override& one : overrides) {
        if (one.path.front() != "series") continue;
        one.used = true;
        const std::string& key = one.path[1];
        Value* const table = seriesWith(merged, key);
        if (!table) {
            diagnostics.error(
                "wrong-value", one.keyPlace,
                fmt::format("[[series]] stands {} times; expected a key that one of them has", merged.items.size()));
        } else if (one.path.size() > 2 && !openList(*table, key)) {
            diagnostics.error("wrong-value", one.keyPlace,
                              fmt::format("[series] {} is a list of several; expected one series, or a group's or "
                                          "component's own, as in groups.NAME.{}",
                                          key, toText(KeyPath(one.path.begin() + 1, one.path.end()))));
        } else {
            putAt(*table, one.path, 1, one.value, one.keyPlace);
        }
    }
    return merged;
}

void reportUnused(const std::vector<Override>& overrides, const std::vector<std::string>& targets,
                  Diagnostics& diagnostics) {
    const std::vector<std::string_view> names(targets.begin(), targets.end());
    for (const Override& one : overrides) {
        if (one.used) continue;
        const std::string target = toText({one.path[0], one.path[1]});
        // The name of a brand or group is easily given without its table.
        const auto whole = std::find_if(names.begin(), names.end(),
                                        [&](std::string_view name) { return name.ends_with("." + target); });
        const std::string hint = whole == names.end()
                                     ? diagnostics.suggest(target, [&] { return names; })
                                     : fmt::format("; did you mean \"{}.{}\"?", *whole,
                                                   toText(KeyPath(one.path.begin() + 2, one.path.end())));
        diagnostics.error("unknown-name", one.keyPlace, fmt::format("there is no \"{}\" in the model{}", target, hint));
    }
}

}  // namespace kesto
