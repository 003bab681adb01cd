#include "page_data.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "base64.h"
#include "expected_shape.h"
#include "files.h"
#include "page_parts.h"

namespace kesto {

namespace {

constexpr std::size_t kMostWarnings = 100;

std::string textOf(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

// Of a path on either system: where the files lay is nobody's business who is handed the page.
std::string fileName(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

const Json& listOf(const Json& object, const char* key) {
    static const Json kEmpty = Json::array();
    const auto found = object.find(key);
    return found != object.end() && found->is_array() ? *found : kEmpty;
}

// A message without the folder of the model in the names of its files.
std::string withoutFolder(std::string text, const Json& summary) {
    const std::string model = textOf(summary, "model"), folder = model.substr(0, model.size() - fileName(model).size());
    if (folder.size() < 2) return text;
    for (std::size_t at = text.find(folder); at != std::string::npos; at = text.find(folder, at))
        text.erase(at, folder.size());
    return text;
}

void addHead(const Json& summary, Json& page) {
    const std::string title = textOf(summary, "title");
    page["title"] = title.empty() ? fileName(textOf(summary, "model")) : title;
    if (const std::string place = textOf(summary, "place"); !place.empty()) page["place"] = place;
    for (const char* key :
         {"start", "end", "steps", "steps_run", "days_per_step", "components", "connections", "outcome"}) {
        if (summary.contains(key)) page[key] = summary[key];
    }
    page["message"] = withoutFolder(textOf(summary, "message"), summary);
}

void addWarnings(const Json& summary, Json& page) {
    Json rows = Json::array();
    std::size_t count = 0;
    for (const char* list : {"errors", "warnings"}) {
        for (const Json& given : listOf(summary, list)) {
            if (++count > kMostWarnings) continue;
            Json row;
            for (const char* key : {"text", "code", "severity", "accepted", "file", "line", "component"}) {
                if (given.contains(key) && !given[key].is_null()) row[key] = given[key];
            }
            if (row.contains("file")) row["file"] = fileName(textOf(row, "file"));
            if (row.contains("text")) row["text"] = withoutFolder(textOf(row, "text"), summary);
            rows.push_back(std::move(row));
        }
    }
    page["warnings"] = std::move(rows);
    if (count > kMostWarnings) page["more_warnings"] = count - kMostWarnings;
}

bool isNothing(const Json& value) {
    return value.is_null() || (value.is_number() && value.get<double>() == 0);
}

// Rows of one side and kind beyond the bound become one.
Json accountOf(const Json& summary) {
    const Json& given = listOf(summary, "account");
    if (given.size() <= kMostRows) return given;
    Json rows = Json::array();
    for (const Json& entry : given) {
        auto same = std::find_if(rows.begin(), rows.end(), [&](const Json& row) {
            return row.at("side") == entry.at("side") && row.at("kind") == entry.at("kind");
        });
        if (same == rows.end()) {
            rows.push_back(
                {{"side", entry.at("side")}, {"kind", entry.at("kind")}, {"litres", 0.0}, {"components", 0}});
            same = rows.end() - 1;
        }
        Json& row = *same;
        if (entry.at("litres").is_number())
            row["litres"] = row.at("litres").get<double>() + entry.at("litres").get<double>();
        row["components"] = row.at("components").get<int>() + 1;
    }
    return rows;
}

// Rows for which `matters`, up to the bound; how many more there are stands beside them.
template <class Matters>
void addRows(const Json& summary, const char* key, const Matters& matters, Json& page) {
    Json rows = Json::array();
    std::size_t more = 0;
    for (const Json& row : listOf(summary, key)) {
        if (!matters(row)) continue;
        rows.size() < kMostRows ? rows.push_back(row) : static_cast<void>(++more);
    }
    if (rows.empty()) return;
    page[key] = std::move(rows);
    if (more > 0) page[std::string("more_") + key] = more;
}

Json madeOf(const Json& summary) {
    Json made{{"version", summary.value("version", KESTO_VERSION)}, {"model", fileName(textOf(summary, "model"))}};
    if (summary.contains("model_sha256")) made["model_sha256"] = summary["model_sha256"];
    for (const Json& input : listOf(summary, "inputs")) {
        made["inputs"].push_back({{"file", fileName(textOf(input, "file"))}, {"sha256", textOf(input, "sha256")}});
    }
    Json options = Json::array();
    const auto add = [&](const char* name, const std::string& text) {
        if (!text.empty()) options.push_back({name, text});
    };
    for (const Json& one : listOf(summary, "scenarios"))
        add("--scenario", one.get<std::string>());
    for (const Json& one : listOf(summary, "set"))
        add("--set", one.get<std::string>());
    add("--states-from", fileName(textOf(summary, "states_from")));
    if (summary.value("approximate", false)) add("--approximate", "yes");
    if (!options.empty()) made["options"] = std::move(options);
    return made;
}

}  // namespace

std::string packed(const std::vector<float>& values) {
    std::vector<std::int32_t> bits;
    bits.reserve(values.size());
    for (const float value : values) {
        bits.push_back(
            std::bit_cast<std::int32_t>(std::isfinite(value) ? value : std::numeric_limits<float>::quiet_NaN()));
    }
    return packed(bits);
}

std::string packed(std::span<const std::int32_t> values) {
    std::vector<unsigned char> bytes;
    bytes.reserve(4 * values.size());
    for (const std::int32_t value : values) {
        for (int shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<unsigned char>(static_cast<std::uint32_t>(value) >> shift));
        }
    }
    return base64(bytes);
}

Json pageData(const PageSource& source) {
    const Json summary = Json::parse(source.stored.summary);
    expectSummary(summary, joined(source.folder, kSummaryFile));
    const Json overview = readOverview(source.folder, source.stored.files);
    Json page;
    addHead(summary, page);
    addWarnings(summary, page);
    if (!source.changes.empty()) page["changes"] = source.changes;
    if (Json cards = cardsOf(summary, overview); !cards.empty()) page["cards"] = std::move(cards);
    for (const char* key : {"paths", "months", "years", "stores"}) {
        if (overview.contains(key)) page[key] = overview[key];
    }
    if (source.model) page["network"] = networkOf(source, summary, overview);
    addSeries(source, summary, overview, page);
    if (Json account = accountOf(summary); !account.empty()) page["account"] = std::move(account);
    addRows(
        summary, "balance", [](const Json&) { return true; }, page);
    addRows(
        summary, "figures", [](const Json& row) { return !row.at("value").is_null(); }, page);
    addRows(
        summary, "potentials", [](const Json& row) { return !isNothing(row.at("total")); }, page);
    page["made"] = madeOf(summary);
    return page;
}

}  // namespace kesto
