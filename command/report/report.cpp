#include "report.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>

#include "base64.h"
#include "markup.h"
#include "report_page.h"
#include "results_reader.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

// A chart of daily results.
struct Section {
    std::vector<NamedSeries> ReadResults::*series;
    std::string_view id, title, note;
    bool marksAbsence = false;
};

constexpr Section kSections[] = {
    {&ReadResults::flows, "flows", "Flows",
     "Drag to zoom into days, double-click to see all; all charts show the same days."},
    {&ReadResults::storages, "storages", "Storages", "What each store holds at the end of the day."},
    {&ReadResults::qualities, "qualities", "Qualities", "Quality of each flow; days on which it had none are left out.",
     true},
    {&ReadResults::storeQualities, "store-qualities", "Qualities of stores", "Quality of what each store holds.", true},
    {&ReadResults::potentials, "potentials", "Potentials", "What was booked on each group, day by day."},
};

// Little-endian floats: exact, and a third of the text. What is no finite number is a gap, however the file has it.
std::string packed(const std::vector<float>& values) {
    std::vector<unsigned char> bytes;
    bytes.reserve(4 * values.size());
    for (const float value : values) {
        const auto bits =
            std::bit_cast<std::uint32_t>(std::isfinite(value) ? value : std::numeric_limits<float>::quiet_NaN());
        for (int shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<unsigned char>(bits >> shift));
        }
    }
    return base64(bytes);
}

Json seriesOf(const std::vector<NamedSeries>& list) {
    Json all = Json::array();
    for (const NamedSeries& one : list) {
        all.push_back({{"name", one.name}, {"unit", one.unit}, {"values", packed(one.values)}});
    }
    return all;
}

Json dataOf(const std::string& folder, const StoredResults& stored, const std::vector<std::string>& changes) {
    const ReadResults results = readResults(folder, stored.files);
    Json summary = Json::parse(stored.summary);
    summary.erase("files");  // the page is the same, whatever they are
    Json data{
        {"summary", std::move(summary)}, {"changes", changes}, {"days", results.days}, {"sections", Json::array()}};
    for (const Section& section : kSections) {
        const std::vector<NamedSeries>& list = results.*section.series;
        if (list.empty()) continue;
        data["sections"].push_back({{"id", section.id},
                                    {"title", section.title},
                                    {"note", section.note},
                                    {"marksAbsence", section.marksAbsence},
                                    {"series", seriesOf(list)}});
    }
    return data;
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

bool hasCharts() {
    return !page::kUplotScript.empty();
}

std::string reportPage(const PageSource& source, const std::string& drawing) {
    Json data = dataOf(source.folder, source.stored, source.changes);
    data["page"] = pageData(source);
    std::string title = data["summary"].value("title", "");
    if (title.empty()) title = data["summary"].value("model", "Results");
    return filled(page::kHtml, {{"title", escapeMarkup(title)},
                                {"folder", escapeMarkup(source.folder)},
                                {"drawing", drawing},
                                {"data", insideScript(data.dump(-1, ' ', false, Json::error_handler_t::replace))},
                                {"page.css", std::string(page::kCss)},
                                {"page.js", std::string(page::kScript)},
                                {"uplot.js", std::string(page::kUplotScript)},
                                {"uplot.css", std::string(page::kUplotCss)},
                                {"uplot.licence", escapeMarkup(page::kUplotLicence)}});
}

}  // namespace kesto
