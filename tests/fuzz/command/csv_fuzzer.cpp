// Any bytes as a CSV file: read or refused, and every cell can be looked at.
#include <cstdint>
#include <string>

#include "calendar.h"
#include "csv_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kesto::Diagnostics diagnostics;
    const auto csv =
        kesto::CsvFile::parse(std::string(reinterpret_cast<const char*>(data), size), "input.csv", diagnostics);
    if (!csv && !diagnostics.hasErrors()) __builtin_trap();  // refused without a word
    if (!csv) return 0;
    std::size_t characters = 0;
    for (std::size_t row = 0; row < csv->rows(); ++row) {
        for (std::size_t column = 0; column < csv->columns().size(); ++column) {
            characters += csv->cell(row, column).size();
            kesto::parseNumber(csv->cell(row, column));
            kesto::parseFloat(csv->cell(row, column));
            kesto::parseDay(csv->cell(row, column));
            if (csv->placeOf(row, column).line < 1) __builtin_trap();
        }
    }
    if (characters > size) __builtin_trap();
    return 0;
}
