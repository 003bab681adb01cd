#include "value.h"

#include <fmt/format.h>

#include "display.h"

namespace kesto {

namespace {

constexpr std::size_t kLongestShown = 200;

}  // namespace

const Value* Value::field(std::string_view name) const {
    for (const auto& [key, value] : fields) {
        if (key.value == name) return &value;
    }
    return nullptr;
}

bool isQuantity(std::string_view text) {
    const std::size_t blank = text.find(' ');
    return blank != std::string_view::npos && parseNumber(text.substr(0, blank));
}

std::string describe(const Value& value) {
    switch (value.kind) {
        case Value::Kind::boolean:
            return value.boolean ? "true" : "false";
        case Value::Kind::integer:
        case Value::Kind::real:
            return fmt::format("the number {}", value.number);
        case Value::Kind::text:
            return fmt::format("the text \"{}\"", shortened(value.text, kLongestShown));
        case Value::Kind::date:
            return fmt::format("the date {}", toText(value.day));
        case Value::Kind::array:
            return "a list";
        case Value::Kind::table:
            return "a table";
    }
    return "something else";
}

}  // namespace kesto
