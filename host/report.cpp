#include "report.h"

#include <fmt/format.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "calendar.h"
#include "csv_file.h"
#include "report_page.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

// A file of daily results and how the page shows it.
struct Section {
    std::string_view file, ending, id, title, note;
    bool marksAbsence = false;
};

constexpr Section kSections[] = {
    {"flows.csv", "", "flows", "Flows",
     "Drag to zoom into days, double-click to see all; all charts show the same days."},
    {"states.csv", ":storage", "storages", "Storages", "What each store holds at the end of the day."},
    {"qualities.csv", "", "qualities", "Qualities", "Quality of each flow; days on which it had none are left out.",
     true},
    {"states.csv", ":quality", "store-qualities", "Qualities of stores", "Quality of what each store holds.", true},
    {"potentials.csv", "", "potentials", "Potentials", "What was booked on each group, day by day."},
};

std::optional<CsvFile> readResults(const std::filesystem::path& path) {
    if (!std::filesystem::exists(path)) return std::nullopt;
    Diagnostics diagnostics;
    std::optional<CsvFile> csv = CsvFile::read(path.string(), diagnostics);
    if (csv && !diagnostics.hasErrors()) return csv;
    std::ostringstream text;
    diagnostics.print(text);
    throw std::runtime_error(text.str());
}

std::string base64(const std::vector<unsigned char>& bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto at = [&](std::size_t k) { return k < bytes.size() ? static_cast<unsigned>(bytes[k]) : 0U; };
        const unsigned three = at(i) << 16 | at(i + 1) << 8 | at(i + 2);
        for (int digit = 0; digit < 4; ++digit) {
            const bool isPadding = i + static_cast<std::size_t>(digit) > bytes.size();
            text += isPadding ? '=' : kDigits[three >> (18 - 6 * digit) & 63];
        }
    }
    return text;
}

// The values of a column as little-endian floats: exact, and a third of the text.
std::string packedColumn(const CsvFile& csv, std::size_t column) {
    std::vector<unsigned char> bytes;
    bytes.reserve(4 * csv.rows());
    for (std::size_t row = 0; row < csv.rows(); ++row) {
        const float value = parseFloat(csv.cell(row, column)).value_or(std::numeric_limits<float>::quiet_NaN());
        const auto bits = std::bit_cast<std::uint32_t>(value);
        for (int shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<unsigned char>(bits >> shift));
        }
    }
    return base64(bytes);
}

// "tank:overflow [L]" apart.
std::pair<std::string, std::string> nameAndUnit(const std::string& header) {
    const std::size_t bracket = header.rfind(" [");
    if (bracket == std::string::npos || header.back() != ']') return {header, ""};
    return {header.substr(0, bracket), header.substr(bracket + 2, header.size() - bracket - 3)};
}

Json seriesOf(const CsvFile& csv, std::string_view ending) {
    Json all = Json::array();
    for (std::size_t column = 1; column < csv.columns().size(); ++column) {
        auto [name, unit] = nameAndUnit(csv.columns()[column]);
        if (!name.ends_with(ending)) continue;
        name.resize(name.size() - ending.size());
        if (unit == "quality") unit.clear();  // it has none of its own
        all.push_back({{"name", name}, {"unit", unit}, {"values", packedColumn(csv, column)}});
    }
    return all;
}

Json daysOf(const CsvFile& csv) {
    Json days = Json::array();
    for (std::size_t row = 0; row < csv.rows(); ++row) {
        const std::optional<Day> day = parseDay(csv.cell(row, 0));
        if (!day) {
            throw std::runtime_error(fmt::format("{}: expected a date as in 2012-01-31, found \"{}\"",
                                                 toString(csv.placeOf(row, 0)), csv.cell(row, 0)));
        }
        days.push_back(*day);
    }
    return days;
}

// A table that is shown as it stands.
Json tableOf(const CsvFile& csv, std::string_view title) {
    Json rows = Json::array();
    for (std::size_t row = 0; row < csv.rows(); ++row) {
        Json cells = Json::array();
        for (std::size_t column = 0; column < csv.columns().size(); ++column) {
            const std::string_view cell = csv.cell(row, column);
            const std::optional<double> number = parseNumber(cell);
            if (number) {
                cells.push_back(*number);
            } else {
                cells.push_back(cell);
            }
        }
        rows.push_back(std::move(cells));
    }
    return {{"title", title}, {"columns", csv.columns()}, {"rows", std::move(rows)}};
}

Json dataOf(const std::string& folder, const std::string& summary) {
    Json data{{"summary", Json::parse(summary)},
              {"days", Json::array()},
              {"sections", Json::array()},
              {"tables", Json::array()}};
    for (const Section& section : kSections) {
        const std::optional<CsvFile> csv = readResults(std::filesystem::path(folder) / section.file);
        if (!csv) continue;
        Json series = seriesOf(*csv, section.ending);
        if (series.empty()) continue;
        Json days = daysOf(*csv);
        if (!data["sections"].empty() && days != data["days"]) {
            throw std::runtime_error(fmt::format(
                "{}: {} has other dates than the files before it; they are of two runs", folder, section.file));
        }
        data["days"] = std::move(days);
        data["sections"].push_back({{"id", section.id},
                                    {"title", section.title},
                                    {"note", section.note},
                                    {"marksAbsence", section.marksAbsence},
                                    {"series", std::move(series)}});
    }
    if (data["sections"].empty()) {
        throw std::runtime_error(
            fmt::format("{}: no results as CSV stand here; expected a folder that "
                        "\"kesto run MODEL -o FOLDER\" wrote",
                        folder));
    }
    if (const auto balance = readResults(std::filesystem::path(folder) / "balance.csv")) {
        data["tables"].push_back(tableOf(*balance, "Water balance"));
    }
    return data;
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    }
    return result;
}

// JSON within a script element: no "<" that the browser could take for the end of the script or the start of a comment.
std::string insideScript(std::string text) {
    constexpr std::string_view kEscaped = "\\u003c";
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos; at += kEscaped.size()) {
        text.replace(at, 1, kEscaped);
    }
    return text;
}

// Each {{name}} of the page in one pass, so that nothing is looked for in what was filled in.
std::string filled(std::string_view page, const std::map<std::string_view, std::string>& parts) {
    std::string result;
    for (;;) {
        const std::size_t open = page.find("{{");
        result += page.substr(0, open);
        if (open == std::string_view::npos) return result;
        const std::size_t close = page.find("}}", open);
        result += parts.at(page.substr(open + 2, close - open - 2));
        page.remove_prefix(close + 2);
    }
}

}  // namespace

std::string reportPage(const std::string& folder, const std::string& summary, const std::string& drawing) {
    const Json data = dataOf(folder, summary);
    std::string title = data["summary"].value("title", "");
    if (title.empty()) title = data["summary"].value("model", "Results");
    return filled(page::kHtml, {{"title", escaped(title)},
                                {"folder", escaped(folder)},
                                {"drawing", drawing},
                                {"data", insideScript(data.dump(-1, ' ', false, Json::error_handler_t::replace))},
                                {"page.css", std::string(page::kCss)},
                                {"page.js", std::string(page::kScript)},
                                {"uplot.js", std::string(page::kUplotScript)},
                                {"uplot.css", std::string(page::kUplotCss)},
                                {"uplot.licence", escaped(page::kUplotLicence)}});
}

}  // namespace kesto
