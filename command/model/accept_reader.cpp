// Reads what a model accepts: warnings that are meant.
#include <fmt/format.h>

#include <algorithm>

#include "reader_parts.h"

namespace kesto {

namespace {

std::vector<std::string_view> warningNames() {
    std::vector<std::string_view> names;
    for (const WarningCode& code : kWarningCodes) {
        names.push_back(code.name);
    }
    return names;
}

// "no-input sewer": a code, then the name of a component, which may hold blanks; a code alone is of all components.
void readOne(Reading& reading, const std::string& text, const Place& place) {
    const std::size_t blank = text.find(' ');
    const std::string code = text.substr(0, blank);
    const std::string component = blank == std::string::npos ? "" : text.substr(blank + 1);
    const std::vector<std::string_view> codes = warningNames();
    if (std::find(codes.begin(), codes.end(), code) == codes.end()) {
        reading.diagnostics.error("unknown-name", place,
                                  fmt::format("accept: there is no warning with the code \"{}\"; \"kesto codes\" lists "
                                              "them{}",
                                              code, reading.diagnostics.suggest(code, [&] { return codes; })));
    }
    const bool isKnown =
        component.empty() || reading.model.findComponent(component) >= 0 || reading.unknownTypes.contains(component);
    if (!isKnown) {
        reading.diagnostics.error(
            "unknown-name", place,
            fmt::format("accept: there is no component \"{}\"{}", component,
                        reading.diagnostics.suggest(component, [&] { return reading.model.componentNames(); })));
    }
    reading.diagnostics.accept(code, component);
}

}  // namespace

void readAccepted(Reading& reading, const Value* list, const std::vector<std::string>& options) {
    constexpr std::string_view kExpected = "a list of texts \"CODE\" or \"CODE COMPONENT\"";
    if (list && list->kind != Value::Kind::array) {
        reading.diagnostics.error("wrong-value", list->place,
                                  fmt::format("accept is {}; expected {}", describe(*list), kExpected));
    }
    for (std::size_t i = 0; list && i < list->items.size(); ++i) {
        const Value& item = list->items[i];
        if (item.kind == Value::Kind::text) {
            readOne(reading, item.text, item.place);
        } else {
            reading.diagnostics.error("wrong-value", item.place,
                                      fmt::format("accept holds {}; expected {}", describe(item), kExpected));
        }
    }
    for (const std::string& option : options) {
        readOne(reading, option, {std::make_shared<const std::string>("--accept \"" + option + "\""), 0, 0});
    }
}

}  // namespace kesto
