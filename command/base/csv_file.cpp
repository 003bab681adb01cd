#include "csv_file.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <new>
#include <numeric>
#include <stdexcept>

#include "files.h"

namespace kesto {

namespace {

constexpr std::size_t kMostTold = 10;  // rows with another number of cells

// "1,5" between semicolons is one cell, between commas two.
bool mayHaveDecimalCommas(std::string_view line) {
    for (std::size_t i = 1; i + 1 < line.size(); ++i) {
        const auto isDigit = [&](std::size_t at) { return line[at] >= '0' && line[at] <= '9'; };
        if (line[i] == ',' && isDigit(i - 1) && isDigit(i + 1)) return true;
    }
    return false;
}

}  // namespace

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
    std::error_code error;
    if (std::filesystem::is_directory(pathOf(path), error)) {
        diagnostics.error("bad-table", named, fmt::format("{} is a folder; expected a CSV file", path));
        return std::nullopt;
    }
    try {
        std::string bytes = readFile(path, kLargestTable);
        const auto why = whyNoTable(bytes);
        if (!why) return parse(std::move(bytes), path, diagnostics);
        diagnostics.error("bad-table", named, fmt::format("{} {}", path, *why));
    } catch (const std::runtime_error& failure) {
        diagnostics.error("no-file", named, failure.what());
    } catch (const std::bad_alloc&) {
        diagnostics.error("out-of-memory", named, fmt::format("memory ran out while {} was read", path));
    }
    return std::nullopt;
}

std::optional<CsvFile> CsvFile::parse(std::string bytes, const std::string& name, Diagnostics& diagnostics) {
    CsvFile csv;
    csv.file_ = std::make_shared<const std::string>(name);
    csv.encoding_ = encodingOf(bytes);
    csv.text_ = std::make_shared<std::string>(toUtf8(std::move(bytes), csv.encoding_));
    csv.split(diagnostics);
    if (csv.columns_.empty()) return std::nullopt;
    csv.findDecimalMark();
    return csv;
}

void CsvFile::split(Diagnostics& diagnostics) {
    const std::string& text = *text_;
    const CsvDialect dialect = csvDialectOf(text);
    delimiter_ = dialect.delimiter;
    std::vector<Cell> cells;
    Line line{dialect.begin, 0, dialect.begin > 0 ? 2 : 1};
    for (; line.begin < text.size(); ++line.number) {
        line.end = std::min(text.find('\n', line.begin), text.size());
        const std::size_t next = line.end + 1;
        if (line.end > line.begin && text[line.end - 1] == '\r') --line.end;
        if (line.end > line.begin && text[line.begin] != '#') {
            if (!splitLine(line, cells, diagnostics)) {
                isWhole_ = false;
                if (columns_.empty()) return;
            } else if (columns_.empty()) {
                takeHeader(line, cells);
            } else {
                takeRow(line, cells, diagnostics);
            }
        }
        line.begin = next;
    }
    if (columns_.empty()) {
        diagnostics.error("bad-table", place(), "this table is empty; expected a line with the names of its columns");
    }
    if (unfit_ <= kMostTold) return;
    const bool isCommaMeant = hasDecimalCommas_ && unfit_ > lines_.size();
    diagnostics.error("bad-table", place(),
                      fmt::format("{} of {} rows have other than {} cell{}{}", unfit_, unfit_ + lines_.size(),
                                  columns_.size(), columns_.size() == 1 ? "" : "s",
                                  isCommaMeant ? "; if they hold decimal commas, part the cells by semicolons" : ""));
}

void CsvFile::takeHeader(const Line& line, const std::vector<Cell>& cells) {
    headerLine_ = line.number;
    for (const Cell& cell : cells) {
        columns_.emplace_back(*text_, line.begin + cell.begin, cell.length);
    }
    byName_.resize(columns_.size());
    std::iota(byName_.begin(), byName_.end(), 0U);
    std::stable_sort(byName_.begin(), byName_.end(),
                     [this](std::uint32_t a, std::uint32_t b) { return columns_[a] < columns_[b]; });
}

void CsvFile::takeRow(const Line& line, const std::vector<Cell>& cells, Diagnostics& diagnostics) {
    if (cells.size() == columns_.size()) {
        if (cells_.empty()) {
            const std::size_t rows = text_->size() / (line.end - line.begin + 1) + 1;
            cells_.reserve(std::min(rows * columns_.size(), text_->size()));
        }
        cells_.insert(cells_.end(), cells.begin(), cells.end());
        lines_.push_back(line.number);
        starts_.push_back(line.begin);
        return;
    }
    isWhole_ = false;
    const std::string_view text = std::string_view(*text_).substr(line.begin, line.end - line.begin);
    if (delimiter_ == ',' && cells.size() > columns_.size()) hasDecimalCommas_ |= mayHaveDecimalCommas(text);
    if (++unfit_ > kMostTold) return;
    diagnostics.error(
        "bad-table", {file_, line.number, 0},
        fmt::format("found {} cell{}{}, expected {} as in the first line", cells.size(), cells.size() == 1 ? "" : "s",
                    delimiter_ == ',' ? "" : fmt::format(" with {}s between them", nameOf(delimiter_)),
                    columns_.size()));
}

// Cells of one line. A quoted cell is unquoted in place, since that only makes it shorter.
bool CsvFile::splitLine(const Line& line, std::vector<Cell>& cells, Diagnostics& diagnostics) {
    const std::string& text = *text_;
    cells.clear();
    std::size_t at = line.begin;
    for (;;) {
        while (at < line.end && isBlank(text[at]))
            ++at;
        Cell cell{static_cast<std::uint32_t>(at - line.begin), 0};
        if (at < line.end && text[at] == '"') {
            if (!unquote(line, at, cell, diagnostics)) return false;
        } else {
            const std::size_t begin = at;
            while (at < line.end && text[at] != delimiter_)
                ++at;
            std::size_t last = at;
            while (last > begin && isBlank(text[last - 1]))
                --last;
            cell.length = static_cast<std::uint32_t>(last - begin);
        }
        cells.push_back(cell);
        if (at >= line.end) return true;
        ++at;
    }
}

// `at` stands on the opening quote, and then on the delimiter.
bool CsvFile::unquote(const Line& line, std::size_t& at, Cell& cell, Diagnostics& diagnostics) {
    std::string& text = *text_;
    const std::size_t begin = ++at;
    std::size_t out = begin;
    for (;; ++at) {
        if (at >= line.end) {
            diagnostics.error("bad-table", {file_, line.number, static_cast<int>(begin - line.begin)},
                              "a quote is not closed");
            return false;
        }
        if (text[at] == '"' && !(at + 1 < line.end && text[at + 1] == '"')) break;
        if (text[at] == '"') ++at;
        if (text[at] == ',' && delimiter_ == ',') hasQuotedCommas_ = true;
        text[out++] = text[at];
    }
    cell.begin = static_cast<std::uint32_t>(begin - line.begin);
    cell.length = static_cast<std::uint32_t>(out - begin);
    ++at;
    while (at < line.end && isBlank(text[at]))
        ++at;
    if (at >= line.end || text[at] == delimiter_) return true;
    diagnostics.error("bad-table", {file_, line.number, static_cast<int>(at - line.begin) + 1},
                      fmt::format("expected a {} after a quoted cell", nameOf(delimiter_)));
    return false;
}

// Between commas a number has no comma of its own, but for quoted ones. Else the first number that can be read in one
// way only tells the mark; without one there may still be no number that needs it.
void CsvFile::findDecimalMark() {
    if (delimiter_ == ',' && !hasQuotedCommas_) return;
    bool isOpen = delimiter_ != ',';
    for (std::size_t row = 0; row < rows(); ++row) {
        for (std::size_t column = 0; column < columns_.size(); ++column) {
            const std::string_view text = cell(row, column);
            const NumberForm form = formOf(text);
            if (form == NumberForm::withPoint || form == NumberForm::withComma) {
                decimalMark_ = form == NumberForm::withPoint ? DecimalMark::point : DecimalMark::comma;
                decisive_ = {row, column};
                return;
            }
            if (form == NumberForm::either && text.find(',') != std::string_view::npos) isOpen = true;
        }
    }
    if (isOpen) decimalMark_ = DecimalMark::unknown;
}

void CsvFile::noteUnderstood(const std::vector<std::string>& more, Diagnostics& diagnostics) const {
    std::vector<std::string> words;
    if (encoding_ != Encoding::utf8) words.push_back(fmt::format("text in {}", toText(encoding_)));
    if (delimiter_ != ',') words.push_back(fmt::format("{}s between cells", nameOf(delimiter_)));
    if (decimalMark_ == DecimalMark::comma) {
        const auto& [row, column] = *decisive_;
        words.push_back(fmt::format("decimal commas (\"{}\" in line {})", cell(row, column), lines_[row]));
    }
    words.insert(words.end(), more.begin(), more.end());
    if (words.empty()) return;
    diagnostics.warning("read-as", place(), fmt::format("read with {}", fmt::join(words, ", ")));
}

std::span<const std::uint32_t> CsvFile::columnsNamed(std::string_view name) const {
    const auto begin = std::lower_bound(byName_.begin(), byName_.end(), name,
                                        [this](std::uint32_t a, std::string_view b) { return columns_[a] < b; });
    auto end = begin;
    while (end != byName_.end() && columns_[*end] == name)
        ++end;
    return {begin, end};
}

std::optional<std::size_t> CsvFile::column(std::string_view name) const {
    const auto columns = columnsNamed(name);
    return columns.empty() ? std::nullopt : std::optional<std::size_t>(columns.front());
}

std::string_view CsvFile::cell(std::size_t row, std::size_t column) const {
    const Cell& cell = cells_[row * columns_.size() + column];
    return std::string_view(*text_).substr(starts_[row] + cell.begin, cell.length);
}

Place CsvFile::placeOf(std::size_t row, std::size_t column) const {
    const Cell& cell = cells_[row * columns_.size() + column];
    const std::string_view before = std::string_view(*text_).substr(starts_[row], cell.begin);
    const auto isStart = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    return {file_, lines_[row], static_cast<int>(std::count_if(before.begin(), before.end(), isStart)) + 1};
}

}  // namespace kesto
