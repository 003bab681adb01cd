// What separates the cells of a table: comma, semicolon or tab, recognised from its first lines.
#pragma once

#include <cstddef>
#include <string_view>

namespace kesto {

struct CsvDialect {
    char delimiter = ',';
    std::size_t begin = 0;  // of the table: after a line "sep=;" by which spreadsheets name the delimiter
};

CsvDialect csvDialectOf(std::string_view text);

std::string_view nameOf(char delimiter);  // "semicolon"

}  // namespace kesto
