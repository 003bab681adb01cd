// Reads a CSV file: a line of names, then rows with as many cells. Cells may be quoted with "; lines that start with #
// and empty lines are passed over. Spreadsheets write the same with semicolons or tabs, decimal commas and in other
// encodings: what is there is found out, and kept for a note on how the file was understood.
//
// By hand: messages name line and column of a cell, which the CSV libraries of Debian do not tell.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "csv_dialect.h"
#include "diagnostics.h"
#include "number_format.h"
#include "text_encoding.h"

namespace kesto {

class CsvFile {
  public:
    // `named` is where the file is named; a file that cannot be read is reported there.
    static std::optional<CsvFile> read(const std::string& path, const Place& named, Diagnostics& diagnostics);
    static std::optional<CsvFile> parse(std::string bytes, const std::string& name, Diagnostics& diagnostics);

    // False when rows were left out, which has been reported: what is left can be checked, but not run.
    bool isWhole() const { return isWhole_; }

    const std::vector<std::string>& columns() const { return columns_; }
    std::optional<std::size_t> column(std::string_view name) const;  // the first of this name
    std::span<const std::uint32_t> columnsNamed(std::string_view name) const;
    std::size_t rows() const { return lines_.size(); }
    std::string_view cell(std::size_t row, std::size_t column) const;
    Place placeOf(std::size_t row, std::size_t column) const;  // column counts characters, from 1
    Place place() const { return {file_, 0, 0}; }
    Place headerPlace() const { return {file_, headerLine_, 0}; }

    DecimalMark decimalMark() const { return decimalMark_; }

    // A note of how the file was understood where it is not plain CSV: its encoding, what parts cells, its decimal
    // mark, and whatever else there is to say.
    void noteUnderstood(const std::vector<std::string>& more, Diagnostics& diagnostics) const;

  private:
    struct Cell {
        std::uint32_t begin, length;  // from the start of its row
    };
    struct Line {
        std::size_t begin, end;
        int number;
    };
    void split(Diagnostics& diagnostics);
    void takeHeader(const Line& line, const std::vector<Cell>& cells);
    void takeRow(const Line& line, const std::vector<Cell>& cells, Diagnostics& diagnostics);
    bool splitLine(const Line& line, std::vector<Cell>& cells, Diagnostics& diagnostics);
    bool unquote(const Line& line, std::size_t& at, Cell& cell, Diagnostics& diagnostics);
    bool isBlank(char c) const { return c == ' ' || (c == '\t' && delimiter_ != '\t'); }
    void findDecimalMark();

    std::shared_ptr<const std::string> file_;
    std::shared_ptr<std::string> text_;  // cells point into it, unquoted in place; shared, so that copies stay valid
    Encoding encoding_ = Encoding::utf8;
    char delimiter_ = ',';
    DecimalMark decimalMark_ = DecimalMark::point;
    std::optional<std::pair<std::size_t, std::size_t>> decisive_;  // row and column of the cell that tells the mark
    bool hasQuotedCommas_ = false;                                 // in cells of a table that commas part
    std::vector<std::string> columns_;
    std::vector<std::uint32_t> byName_;  // columns in the order of their names
    bool isWhole_ = true;
    std::size_t unfit_ = 0;          // rows with another number of cells
    bool hasDecimalCommas_ = false;  // perhaps, in rows with too many cells
    int headerLine_ = 0;
    std::vector<Cell> cells_;  // row by row
    std::vector<int> lines_;   // of each row
    std::vector<std::size_t> starts_;
};

// A text as a cell: quoted where it must be, on one line.
std::string csvCell(std::string_view text);

}  // namespace kesto
