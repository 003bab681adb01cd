#include "value.h"

#include <fmt/format.h>

namespace kesto {

const Value* Value::field(std::string_view name) const {
    for (const auto& [key, value] : fields) {
        if (key.value == name) return &value;
    }
    return nullptr;
}

std::string describe(const Value& value) {
    switch (value.kind) {
        case Value::Kind::boolean:
            return value.boolean ? "true" : "false";
        case Value::Kind::integer:
        case Value::Kind::real:
            return fmt::format("the number {}", value.number);
        case Value::Kind::text:
            return fmt::format("the text \"{}\"", value.text);
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
