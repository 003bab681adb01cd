#include "csv_dialect.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kesto {

namespace {

// Where two fit alike, the one that numbers do not have.
constexpr std::array kDelimiters{'\t', ';', ','};
constexpr std::size_t kMostLines = 20;

std::string_view lineAt(std::string_view text, std::size_t begin) {
    std::string_view line = text.substr(begin, text.find('\n', begin) - begin);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

// Header and first rows; comments and empty lines are none.
std::vector<std::string_view> firstLines(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t begin = 0; begin < text.size() && lines.size() < kMostLines;) {
        const std::string_view line = lineAt(text, begin);
        if (!line.empty() && line.front() != '#') lines.push_back(line);
        const std::size_t end = text.find('\n', begin);
        begin = end == std::string_view::npos ? text.size() : end + 1;
    }
    return lines;
}

// Delimiters in quotes part nothing.
std::size_t cellsOf(std::string_view line, char delimiter) {
    std::size_t cells = 1;
    bool isQuoted = false;
    for (const char c : line) {
        if (c == '"') isQuoted = !isQuoted;
        if (c == delimiter && !isQuoted) ++cells;
    }
    return cells;
}

// Lines that the delimiter parts into as many cells as the header.
std::size_t fitting(const std::vector<std::string_view>& lines, char delimiter) {
    const std::size_t cells = cellsOf(lines.front(), delimiter);
    return static_cast<std::size_t>(std::count_if(
        lines.begin(), lines.end(), [&](std::string_view line) { return cellsOf(line, delimiter) == cells; }));
}

// The delimiter that fits most lines, among those that stand in the header.
char delimiterOf(const std::vector<std::string_view>& lines) {
    char best = 0;
    std::size_t most = 0;
    for (const char delimiter : kDelimiters) {
        if (cellsOf(lines.front(), delimiter) == 1) continue;
        const std::size_t fit = fitting(lines, delimiter);
        if (fit <= most) continue;
        most = fit;
        best = delimiter;
    }
    if (best != 0) return best;
    // One column: commas in its rows are decimal ones when they fit better so.
    return fitting(lines, ';') > fitting(lines, ',') ? ';' : ',';
}

}  // namespace

CsvDialect csvDialectOf(std::string_view text) {
    const std::string_view first = lineAt(text, 0);
    if (first.size() == 5 && (first.starts_with("sep=") || first.starts_with("SEP="))) {
        const bool isKnown = std::find(kDelimiters.begin(), kDelimiters.end(), first.back()) != kDelimiters.end();
        if (isKnown) return {first.back(), std::min(text.find('\n'), text.size() - 1) + 1};
    }
    const std::vector<std::string_view> lines = firstLines(text);
    return {lines.empty() ? ',' : delimiterOf(lines), 0};
}

std::string_view nameOf(char delimiter) {
    return delimiter == ';' ? "semicolon" : delimiter == '\t' ? "tab" : "comma";
}

}  // namespace kesto
