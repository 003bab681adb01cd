#include "csv_file.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <stdexcept>

#include "files.h"

namespace kesto {

namespace {

template <class T>
std::optional<T> parse(std::string_view cell) {
    if (!cell.empty() && cell.front() == '+') cell.remove_prefix(1);
    T number{};
    const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), number);
    if (error != std::errc{} || end != cell.data() + cell.size() || !std::isfinite(number)) return std::nullopt;
    return number;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

std::optional<double> parseNumber(std::string_view cell) {
    return parse<double>(cell);
}
std::optional<float> parseFloat(std::string_view cell) {
    return parse<float>(cell);
}

std::string csvCell(std::string_view text) {
    std::string cell;
    for (const char c : text) {
        if (c == '"') cell += '"';
        cell += c == '\n' || c == '\r' ? ' ' : c;
    }
    const bool isPlain = cell.find_first_of(",\"#") == std::string::npos && (cell.empty() || cell.front() != ' ') &&
                         (cell.empty() || cell.back() != ' ');
    return isPlain ? cell : '"' + cell + '"';
}

std::optional<CsvFile> CsvFile::read(const std::string& path, const Place& named, Diagnostics& diagnostics) {
    try {
        return parse(readFile(path), path, diagnostics);
    } catch (const std::runtime_error& error) {
        diagnostics.error(named, error.what());
        return std::nullopt;
    }
}

std::optional<CsvFile> CsvFile::parse(std::string text, const std::string& name, Diagnostics& diagnostics) {
    CsvFile csv;
    csv.file_ = std::make_shared<const std::string>(name);
    csv.text_ = std::make_shared<std::string>(std::move(text));
    csv.split(diagnostics);
    if (csv.columns_.empty()) return std::nullopt;
    return csv;
}

void CsvFile::split(Diagnostics& diagnostics) {
    const std::string& text = *text_;
    std::vector<Cell> cells;
    std::size_t begin = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    for (int line = 1; begin < text.size(); ++line) {
        std::size_t end = text.find('\n', begin);
        if (end == std::string::npos) end = text.size();
        const std::size_t next = end + 1;
        if (end > begin && text[end - 1] == '\r') --end;
        if (end > begin && text[begin] != '#') {
            if (!splitLine(begin, end, line, cells, diagnostics)) {
                isWhole_ = false;
                if (columns_.empty()) return;
            } else if (columns_.empty()) {
                headerLine_ = line;
                for (const Cell& cell : cells) {
                    columns_.emplace_back(text, cell.begin, cell.length);
                }
            } else if (cells.size() != columns_.size()) {
                diagnostics.error({file_, line, 0},
                                  fmt::format("found {} cell{}, expected {} as in the first line", cells.size(),
                                              cells.size() == 1 ? "" : "s", columns_.size()));
                isWhole_ = false;
            } else {
                cells_.insert(cells_.end(), cells.begin(), cells.end());
                lines_.push_back(line);
                starts_.push_back(begin);
            }
        }
        begin = next;
    }
    if (columns_.empty()) {
        diagnostics.error(place(), "this table is empty; expected a line with the names of its columns");
    }
}

// Cells of one line. A quoted cell is unquoted in place, since that only makes it shorter.
bool CsvFile::splitLine(std::size_t begin, std::size_t end, int line, std::vector<Cell>& cells,
                        Diagnostics& diagnostics) {
    std::string& text = *text_;
    cells.clear();
    std::size_t at = begin;
    for (;;) {
        while (at < end && isBlank(text[at]))
            ++at;
        Cell cell{at, 0};
        if (at < end && text[at] == '"') {
            std::size_t out = ++at;
            cell.begin = at;
            for (;; ++at) {
                if (at >= end) {
                    diagnostics.error({file_, line, static_cast<int>(cell.begin - begin)}, "a quote is not closed");
                    return false;
                }
                if (text[at] == '"' && !(at + 1 < end && text[at + 1] == '"')) break;
                if (text[at] == '"') ++at;
                text[out++] = text[at];
            }
            cell.length = out - cell.begin;
            ++at;
            while (at < end && isBlank(text[at]))
                ++at;
            if (at < end && text[at] != ',') {
                diagnostics.error({file_, line, static_cast<int>(at - begin) + 1},
                                  "expected a comma after a quoted cell");
                return false;
            }
        } else {
            while (at < end && text[at] != ',')
                ++at;
            std::size_t last = at;
            while (last > cell.begin && isBlank(text[last - 1]))
                --last;
            cell.length = last - cell.begin;
        }
        cells.push_back(cell);
        if (at >= end) return true;
        ++at;
    }
}

std::optional<std::size_t> CsvFile::column(std::string_view name) const {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (columns_[i] == name) return i;
    }
    return std::nullopt;
}

std::string_view CsvFile::cell(std::size_t row, std::size_t column) const {
    const Cell& cell = cells_[row * columns_.size() + column];
    return std::string_view(*text_).substr(cell.begin, cell.length);
}

Place CsvFile::placeOf(std::size_t row, std::size_t column) const {
    const Cell& cell = cells_[row * columns_.size() + column];
    return {file_, lines_[row], static_cast<int>(cell.begin - starts_[row]) + 1};
}

}  // namespace kesto
