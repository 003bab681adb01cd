// Bytes of a file into text: UTF-8, with or without a mark, UTF-16 with a mark, and Windows-1252, which spreadsheets
// still write; files that are no text are recognised by how they begin.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kesto {

enum class Encoding : std::uint8_t { utf8, utf16LittleEndian, utf16BigEndian, windows1252 };

std::string_view toText(Encoding encoding);  // "UTF-16"

// What the bytes are where they cannot be a table of text, and what to do: "is a PNG picture; expected ...".
std::optional<std::string> whyNoTable(std::string_view bytes);

Encoding encodingOf(std::string_view bytes);

// Without a mark, and with a line feed at the end of each line. What cannot be decoded becomes U+FFFD.
std::string toUtf8(std::string bytes, Encoding encoding);

}  // namespace kesto
