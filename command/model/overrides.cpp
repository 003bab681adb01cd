#include "overrides.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "control_characters.h"
#include "display.h"
#include "toml_depth.h"
#include "toml_file.h"

namespace kesto {

namespace {

constexpr std::size_t kLongestShown = 200;  // of an argument, in messages

// What stands on the command line has no line in a file: all of it carries the argument itself as its place.
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

Override overrideOf(std::string target, std::string key, const std::string& value, const std::string& argument) {
    const Place place{std::make_shared<const std::string>(shortened(argument, kLongestShown)), 0, 0};
    return {std::move(target), std::move(key), parseValue(value, place)};
}

std::vector<Override> parseOverrides(const std::vector<std::string>& texts, Diagnostics& diagnostics) {
    std::vector<Override> overrides;
    for (const std::string& text : texts) {
        const std::string argument = "--set " + text;
        const std::size_t equals = text.find('=');
        const std::size_t dot = text.substr(0, equals).rfind('.');
        if (equals == std::string::npos || dot == std::string::npos || dot == 0 || dot + 1 == equals) {
            const std::string shown = shortened(argument, kLongestShown);
            diagnostics.error("wrong-value", {std::make_shared<const std::string>(shown), 0, 0},
                              "expected COMPONENT.KEY=VALUE, brands.NAME.KEY=VALUE, groups.NAME.KEY=VALUE or "
                              "simulation.KEY=VALUE");
            continue;
        }
        const Override one =
            overrideOf(text.substr(0, dot), text.substr(dot + 1, equals - dot - 1), text.substr(equals + 1), argument);
        refuseControlCharacters(one.value, diagnostics);
        if (tooDeepAt(text.substr(equals + 1))) {
            diagnostics.error("wrong-value", one.value.place,
                              fmt::format("the value nests deeper than {} levels", kDeepestNesting));
        }
        overrides.push_back(one);
    }
    return overrides;
}

Value withOverrides(const Value& table, std::string_view target, std::vector<Override>& overrides) {
    Value merged = table;
    for (Override& one : overrides) {
        if (one.target != target) continue;
        one.used = true;
        std::erase_if(merged.fields, [&](const Field& field) { return field.name.value == one.key; });
        merged.fields.push_back({{one.key, one.value.place}, one.value});
    }
    return merged;
}

void reportUnused(const std::vector<Override>& overrides, const std::vector<std::string>& targets,
                  Diagnostics& diagnostics) {
    const std::vector<std::string_view> names(targets.begin(), targets.end());
    for (const Override& one : overrides) {
        if (one.used) continue;
        // The name of a brand or group is easily given without its table.
        const auto whole = std::find_if(names.begin(), names.end(),
                                        [&](std::string_view name) { return name.ends_with("." + one.target); });
        const std::string hint = whole == names.end() ? diagnostics.suggest(one.target, [&] { return names; })
                                                      : fmt::format("; did you mean \"{}.{}\"?", *whole, one.key);
        diagnostics.error("unknown-name", one.value.place,
                          fmt::format("there is no \"{}\" in the model{}", one.target, hint));
    }
}

}  // namespace kesto
