// Any bytes as a CSV file: read or refused, and every cell can be looked at, as a number and as a date.
#include <cmath>
#include <cstdint>
#include <string>

#include "calendar.h"
#include "csv_file.h"
#include "date_reading.h"

namespace {

// A number is finite, and is one by its form; one way of reading it is that of its file.
void readAsNumber(std::string_view cell, kesto::DecimalMark mark) {
    kesto::parseNumber(cell);
    kesto::parseFloat(cell);
    const auto number = kesto::readNumber(cell, mark);
    const auto single = kesto::readFloat(cell, mark);
    if (number && !std::isfinite(*number)) __builtin_trap();
    if (single && !std::isfinite(*single)) __builtin_trap();
    if (number && kesto::formOf(cell) == kesto::NumberForm::noNumber) __builtin_trap();
    kesto::hasThousands(cell, mark);
    kesto::adviceOn(cell, mark);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    kesto::Diagnostics diagnostics;
    kesto::whyNoTable(bytes);
    const auto csv = kesto::CsvFile::parse(bytes, "input.csv", diagnostics);
    if (!csv && !diagnostics.hasErrors()) __builtin_trap();  // refused without a word
    if (!csv) return 0;
    csv->noteUnderstood({}, diagnostics);
    std::size_t characters = 0;
    for (std::size_t row = 0; row < csv->rows(); ++row) {
        for (std::size_t column = 0; column < csv->columns().size(); ++column) {
            characters += csv->cell(row, column).size();
            readAsNumber(csv->cell(row, column), csv->decimalMark());
            kesto::parseDay(csv->cell(row, column));
            if (csv->placeOf(row, column).line < 1) __builtin_trap();
        }
    }
    for (std::size_t column = 0; column < csv->columns().size(); ++column) {
        if (!csv->column(csv->columns()[column])) __builtin_trap();
        const kesto::DateColumn dates =
            kesto::readDates(csv->rows(), [&](std::size_t row) { return csv->cell(row, column); });
        if (!dates.doubt && dates.days.size() != csv->rows()) __builtin_trap();
        if (dates.doubt && dates.doubt->row >= csv->rows()) __builtin_trap();
    }
    if (characters > 3 * size) __builtin_trap();  // no byte becomes more than three in UTF-8
    return 0;
}
