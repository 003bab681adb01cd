#include "control_characters.h"

#include <fmt/format.h>

#include "display.h"

namespace kesto {

namespace {

void refuseIn(const std::string& text, std::string_view what, const Place& place, Diagnostics& diagnostics) {
    const auto control = controlCharacterIn(text);
    if (!control) return;
    diagnostics.error("wrong-value", place,
                      fmt::format("{} holds the control character {}; expected text that can be printed on one line",
                                  what, *control));
}

void refuseIn(const Value& value, std::string_view key, Diagnostics& diagnostics) {
    if (value.isText()) refuseIn(value.text, key.empty() ? "a text" : key, value.place, diagnostics);
    for (const Value& item : value.items) {
        refuseIn(item, key, diagnostics);
    }
    for (const auto& [name, child] : value.fields) {
        refuseIn(name.value, "a key", name.place, diagnostics);
        refuseIn(child, name.value, diagnostics);
    }
}

}  // namespace

void refuseControlCharacters(const Value& value, Diagnostics& diagnostics) {
    refuseIn(value, "", diagnostics);
}

}  // namespace kesto
