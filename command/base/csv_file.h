// Reads a CSV file: a line of names, then rows with as many cells. Cells may be quoted with "; lines that start with #
// and empty lines are passed over.
//
// By hand: messages name line and column of a cell, which the CSV libraries of Debian do not tell.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics.h"

namespace kesto {

class CsvFile {
  public:
    // `named` is where the file is named; a file that cannot be read is told there.
    static std::optional<CsvFile> read(const std::string& path, const Place& named, Diagnostics& diagnostics);
    static std::optional<CsvFile> parse(std::string text, const std::string& name, Diagnostics& diagnostics);

    // False when rows were left out, which has been reported: what is left can be checked, but not run.
    bool isWhole() const { return isWhole_; }

    const std::vector<std::string>& columns() const { return columns_; }
    std::optional<std::size_t> column(std::string_view name) const;
    std::size_t rows() const { return lines_.size(); }
    std::string_view cell(std::size_t row, std::size_t column) const;
    Place placeOf(std::size_t row, std::size_t column) const;  // column counts characters, from 1
    Place place() const { return {file_, 0, 0}; }
    Place headerPlace() const { return {file_, headerLine_, 0}; }

  private:
    struct Cell {
        std::size_t begin, length;
    };
    void split(Diagnostics& diagnostics);
    bool splitLine(std::size_t begin, std::size_t end, int line, std::vector<Cell>& cells, Diagnostics& diagnostics);

    std::shared_ptr<const std::string> file_;
    std::shared_ptr<std::string> text_;  // cells point into it, unquoted in place; shared, so that copies stay valid
    std::vector<std::string> columns_;
    bool isWhole_ = true;
    int headerLine_ = 0;
    std::vector<Cell> cells_;  // row by row
    std::vector<int> lines_;   // of each row
    std::vector<std::size_t> starts_;
};

// A text as a cell: quoted where it must be, on one line.
std::string csvCell(std::string_view text);

// The whole of a cell as a number; none when it is not one, or is not finite.
std::optional<double> parseNumber(std::string_view cell);
std::optional<float> parseFloat(std::string_view cell);

}  // namespace kesto
