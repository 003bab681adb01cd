// How deep the tables of a TOML text nest, before it is parsed: parser and reader go down into each of them, and a file
// of some kilobytes (a.a.a.a…) would take them beyond the end of the stack.
//
// By hand: toml++ limits brackets, but not dots.
#pragma once

#include <optional>
#include <string_view>

namespace kesto {

inline constexpr int kDeepestNesting = 64;  // a model has five levels

struct TomlPosition {
    int line = 1, column = 1;
};

// Where the text first nests deeper; none when it does not. Of a text that is no TOML, it may be anywhere.
std::optional<TomlPosition> tooDeepAt(std::string_view text);

}  // namespace kesto
