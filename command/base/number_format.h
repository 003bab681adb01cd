// Numbers as tables write them: "1234.5", "1234,5", "1,234.5", "1.234,5", "1 234,5", "1'234.5".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kesto {

// Which decimal mark the numbers of a file have. Unknown: nothing in it tells "1.234" from "1,234".
enum class DecimalMark : std::uint8_t { point, comma, unknown };

// What a cell tells about the decimal mark: nothing ("12", "1 234"), or that it is the point, or the comma; a number
// that can be read either way ("1.234" is 1.234 or 1234) tells nothing and cannot be read without.
enum class NumberForm : std::uint8_t { noNumber, whole, withPoint, withComma, either };

NumberForm formOf(std::string_view cell);

// The engine works in single precision.
bool fitsSinglePrecision(double number);

// The whole of a text as a number, as programs write it ("-1.5e3"); none when it is not one, or is not finite.
std::optional<double> parseNumber(std::string_view text);
std::optional<float> parseFloat(std::string_view text);

// The same of a cell in a file with this decimal mark. What parts the thousands is passed over.
std::optional<double> readNumber(std::string_view cell, DecimalMark mark);
std::optional<float> readFloat(std::string_view cell, DecimalMark mark);

// Why a cell that is no number may have been meant for one: it has the other decimal mark, or can be read both ways.
std::string adviceOn(std::string_view cell, DecimalMark mark);

// True when something parts the thousands of this number.
bool hasThousands(std::string_view cell, DecimalMark mark);

}  // namespace kesto
