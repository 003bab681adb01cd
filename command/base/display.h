// Text that others have written, as a message may show it: on one line, not endless, and nothing that a terminal obeys.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kesto {

// "U+001B" for the first control character of a text in UTF-8; none when it has none.
std::optional<std::string> controlCharacterIn(std::string_view text);

// With each control character as "\u001B".
std::string printable(std::string_view text);

// The same of a text of several lines, which stay.
std::string printableLines(std::string_view text);

// Its beginning and its end, where it has more than `most` bytes.
std::string shortened(std::string_view text, std::size_t most);

std::string withThousands(std::size_t number);  // "11,983"

}  // namespace kesto
