#include "expected_shape.h"

#include <fmt/format.h>

#include <set>

#include "calendar.h"
#include "files.h"
#include "json_reading.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

constexpr bool kNeeded = true;

constexpr ExpectedShape kSummary[] = {
    {"title", Shape::text},
    {"place", Shape::text},
    {"model", Shape::text},
    {"start", Shape::day, kNeeded},
    {"end", Shape::day, kNeeded},
    {"steps", Shape::number},
    {"steps_run", Shape::number, kNeeded},
    {"days_per_step", Shape::number},
    {"components", Shape::number},
    {"connections", Shape::number},
    {"outcome", Shape::text, kNeeded},
    {"message", Shape::text},
    {"version", Shape::text},
    {"model_sha256", Shape::text},
    {"errors[].text", Shape::text, kNeeded},
    {"errors[].code", Shape::text},
    {"errors[].severity", Shape::text},
    {"errors[].accepted", Shape::boolean},
    {"warnings[].text", Shape::text, kNeeded},
    {"warnings[].code", Shape::text},
    {"warnings[].severity", Shape::text},
    {"warnings[].accepted", Shape::boolean},
    {"flows[].name", Shape::text, kNeeded},
    {"flows[].carries", Shape::text, kNeeded},
    {"account[].side", Shape::text, kNeeded},
    {"account[].kind", Shape::text, kNeeded},
    {"account[].component", Shape::text},
    {"account[].litres", Shape::numberOrNull, kNeeded},
    {"account[].reason", Shape::text},
    {"figures[].name", Shape::text, kNeeded},
    {"figures[].value", Shape::numberOrNull, kNeeded},
    {"figures[].unit", Shape::text, kNeeded},
    {"figures[].from", Shape::text},
    {"figures[].to", Shape::text},
    {"potentials[].group", Shape::text, kNeeded},
    {"potentials[].potential", Shape::text, kNeeded},
    {"potentials[].total", Shape::numberOrNull, kNeeded},
    {"potentials[].unit", Shape::text, kNeeded},
    {"balance[].level", Shape::text, kNeeded},
    {"balance[].name", Shape::text, kNeeded},
    {"scenarios[]", Shape::text},
    {"set[]", Shape::text},
    {"approximate", Shape::boolean},
};

constexpr ExpectedShape kOverview[] = {
    {"use", Shape::number},
    {"persons", Shape::number},
    {"service.label", Shape::text, kNeeded},
    {"service.components", Shape::number},
    {"service.demand", Shape::number, kNeeded},
    {"service.served", Shape::number, kNeeded},
    {"service.days_in_full", Shape::number},
    {"overflow.label", Shape::text, kNeeded},
    {"overflow.litres", Shape::number, kNeeded},
    {"overflow.inflow", Shape::number, kNeeded},
    {"paths.nodes[].id", Shape::text, kNeeded},
    {"paths.nodes[].label", Shape::text, kNeeded},
    {"paths.nodes[].kind", Shape::text, kNeeded},
    {"paths.nodes[].components", Shape::number},
    {"paths.nodes[].litres", Shape::number, kNeeded},
    {"paths.links[].from", Shape::text, kNeeded},
    {"paths.links[].to", Shape::text, kNeeded},
    {"paths.links[].litres", Shape::number, kNeeded},
    {"months.first", Shape::month, kNeeded},
    {"months.whole[]", Shape::boolean},
    {"months.unit", Shape::text, kNeeded},
    {"months.series[].label", Shape::text, kNeeded},
    {"months.series[].kind", Shape::text, kNeeded},
    {"months.series[].values[]", Shape::numberOrNull, kNeeded},
    {"years.years[]", Shape::number, kNeeded},
    {"years.whole[]", Shape::boolean, kNeeded},
    {"years.rows[].label", Shape::text, kNeeded},
    {"years.rows[].unit", Shape::text, kNeeded},
    {"years.rows[].values[]", Shape::numberOrNull, kNeeded},
    {"stores.list[].name", Shape::text, kNeeded},
    {"stores.list[].type", Shape::text, kNeeded},
    {"stores.list[].group", Shape::text},
    {"stores.list[].unit", Shape::text, kNeeded},
    {"stores.list[].capacity", Shape::number},
    {"stores.list[].empty_share", Shape::number},
    {"stores.list[].empty_below", Shape::number},
    {"stores.list[].full_share", Shape::number},
    {"stores.list[].full_from", Shape::number},
    {"stores.more", Shape::number},
    {"sums[].type", Shape::text, kNeeded},
    {"sums[].group", Shape::text},
    {"sums[].output", Shape::text, kNeeded},
    {"sums[].unit", Shape::text, kNeeded},
    {"sums[].carries", Shape::text},
    {"sums[].months[]", Shape::numberOrNull, kNeeded},
    {"series", Shape::number},
    {"shown[].name", Shape::text, kNeeded},
    {"shown[].first", Shape::boolean},
};

std::string_view wordsFor(Shape shape) {
    constexpr std::string_view kWords[] = {"a text",
                                           "a number",
                                           "a number or null",
                                           "true or false",
                                           "a date such as 2012-01-31",
                                           "a month such as 2012-01"};
    return kWords[static_cast<std::size_t>(shape)];
}

bool has(const Json& value, Shape shape) {
    if (value.is_string() && shape == Shape::day) return parseDay(value.get<std::string>()).has_value();
    if (value.is_string() && shape == Shape::month) return parseDay(value.get<std::string>() + "-01").has_value();
    const bool isNull = value.is_null() && shape == Shape::numberOrNull;
    if (shape == Shape::number || shape == Shape::numberOrNull) return value.is_number() || isNull;
    return shape == Shape::text ? value.is_string() : shape == Shape::boolean && value.is_boolean();
}

// One row of a table against a file. `at` is where `value` stands there, `path` the rest of the way.
class Walk {
  public:
    Walk(const ExpectedShape& expected, const std::string& file) : expected_(expected), file_(file) {}

    void of(const Json& value, std::string_view path, const std::string& at) const {
        if (path.empty()) {
            const bool isAbsent = value.is_null() && !expected_.isNeeded;
            if (!isAbsent && !has(value, expected_.shape)) fail(at, wordsFor(expected_.shape), value.type_name());
        } else if (path.starts_with("[]")) {
            if (!value.is_array()) fail(at, "a list", value.type_name());
            for (std::size_t i = 0; i < value.size(); ++i) {
                of(value[i], after(path, 2), fmt::format("{}[{}]", at, i));
            }
        } else {
            ofKey(value, path, at);
        }
    }

  private:
    static std::string_view after(std::string_view path, std::size_t length) {
        path.remove_prefix(length);
        return path.starts_with('.') ? path.substr(1) : path;
    }

    void ofKey(const Json& value, std::string_view path, const std::string& at) const {
        const std::string name(path.substr(0, path.find_first_of(".[")));
        const std::string place = at.empty() ? name : at + "." + name;
        if (!value.is_object()) fail(at, "an object", value.type_name());
        const auto found = value.find(name);
        if (found != value.end()) return of(*found, after(path, name.size()), place);
        // A table that is not there has no rows; what is there has all that a row is made of.
        const bool isTable = at.empty() && name != path;
        if (expected_.isNeeded && !isTable) fail(place, name == path ? wordsFor(expected_.shape) : "a list", "nothing");
    }

    [[noreturn]] void fail(const std::string& at, std::string_view wanted, std::string_view found) const {
        failReading(file_, "kesto run",
                    fmt::format("{}: expected {}, found {}", at.empty() ? "the whole" : at, wanted, found));
    }

    const ExpectedShape& expected_;
    const std::string& file_;
};

// Links of the flow diagram join nodes that it has.
void expectEnds(const Json& overview, const std::string& file) {
    const Json paths = overview.value("paths", Json::object());
    std::set<std::string> ids;
    for (const Json& node : paths.value("nodes", Json::array())) {
        ids.insert(node.at("id").get<std::string>());
    }
    for (const Json& link : paths.value("links", Json::array())) {
        for (const char* end : {"from", "to"}) {
            const std::string id = link.at(end).get<std::string>();
            if (!ids.contains(id)) failReading(file, "kesto run", fmt::format("paths: no node has the id \"{}\"", id));
        }
    }
}

}  // namespace

void expectShape(const Json& content, std::span<const ExpectedShape> expected, const std::string& file) {
    for (const ExpectedShape& one : expected) {
        Walk(one, file).of(content, one.path, {});
    }
}

void expectSummary(const Json& summary, const std::string& file) {
    expectShape(summary, kSummary, file);
}

Json readOverview(const std::string& folder, const std::vector<WrittenFile>& files) {
    constexpr std::size_t kLargest = 50'000'000;  // many times what a run writes
    if (!find(files, kOverviewFile)) return Json::object();
    const std::string file = joined(folder, kOverviewFile);
    Json overview = readingJson(file, "kesto run", [&] { return Json::parse(readFile(file, kLargest)); });
    expectShape(overview, kOverview, file);
    expectEnds(overview, file);
    return overview;
}

}  // namespace kesto
