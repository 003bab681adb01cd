#include "compared_members.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "compared_keys.h"
#include "csv_file.h"
#include "engine_run.h"
#include "files.h"
#include "json_reading.h"
#include "number_format.h"
#include "sweep_files.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostListed = 10'000;
constexpr std::size_t kMostVarying = 200;
constexpr std::size_t kMostFailures = 8;  // that are told of

std::size_t numberIn(std::string_view text, const std::string& all) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number == 0) {
        throw std::runtime_error(fmt::format("--members {}: expected numbers of members, as in 1,5,9-12", all));
    }
    return number;
}

// Where the files lay is nobody's business who is handed the page.
std::string withoutFolder(std::string text, const std::string& folder) {
    if (folder.empty()) return text;
    for (std::size_t at = text.find(folder); at != std::string::npos; at = text.find(folder, at)) {
        text.erase(at, folder.size());
    }
    return text;
}

CsvFile readTable(const std::string& folder) {
    Diagnostics diagnostics;
    auto table =
        CsvFile::read(joined(folder, kMembersTable), {std::make_shared<const std::string>(folder), 0, 0}, diagnostics);
    if (table && !diagnostics.hasErrors()) return std::move(*table);
    std::ostringstream text;
    diagnostics.print(text);
    throw std::runtime_error(text.str());
}

class Members {
  public:
    explicit Members(const std::string& folder)
        : folder_(folder), table_(readTable(folder)), json_(Json::parse(readFile(path(), kLargestSummary))) {
        if (table_.rows() == 0) failReading(joined(folder, kMembersTable), "kesto sweep", "it has no rows");
        for (const Json& column : json_.at("columns")) {
            columns_.push_back({column.at("name"), column.at("unit")});
        }
        const std::vector<WrittenFile> files = filesIn(json_.at("files"));
        const WrittenFile* table = find(files, kMembersTable);
        if (!table || !isUnchanged(folder, *table)) {
            throw std::runtime_error(
                fmt::format("{} is not as the sweep has written it", joined(folder, kMembersTable)));
        }
        for (std::size_t row = 0; row < table_.rows(); ++row) {
            rows_[numberIn(table_.cell(row, need("member")), std::string(table_.cell(row, 0)))] = row;
        }
    }

    std::string path() const { return joined(folder_, kMembersFile); }
    std::size_t size() const { return rows_.size(); }

    std::vector<std::size_t> first(std::size_t most) const {
        std::vector<std::size_t> members;
        for (auto row = rows_.begin(); row != rows_.end() && members.size() < most; ++row) {
            members.push_back(row->first);
        }
        return members;
    }

    ComparedRun run(std::size_t member) const {
        const auto found = rows_.find(member);
        if (found == rows_.end()) {
            throw std::runtime_error(fmt::format("{} has no member {}; it has {} to {}", folder_, member,
                                                 rows_.begin()->first, rows_.rbegin()->first));
        }
        const std::size_t row = found->second;
        ComparedRun run{.name = fmt::format("{} member {}", folder_, member),
                        .title = keysOf(row),
                        .model = nameOf(std::filesystem::absolute(pathOf(json_.at("model").get<std::string>()))),
                        .modelSha256 = json_.at("made_of").at("inputs").at(0).at("sha256"),
                        .start = "",
                        .end = "",
                        .outcome = std::string(table_.cell(row, need("outcome"))),
                        .figures = {},
                        .units = {}};
        const auto keys = json_.at("keys").get<std::vector<std::string>>();
        for (const MemberColumn& column : columns_) {
            run.figures.emplace_back(figureIn(column.name, keys), valueAt(row, column.name));
            run.units.push_back(column.unit);
        }
        return run;
    }

    ComparedSweep sweep(std::size_t most) const {
        ComparedSweep sweep;
        sweep.title = json_.value("title", "");
        sweep.all = rows_.size();
        const std::size_t step = (rows_.size() + most - 1) / most;
        std::vector<std::size_t> shown;
        std::size_t number = 0;
        for (const auto& [member, row] : rows_) {
            if (number++ % step != 0) continue;
            sweep.members.push_back(member);
            shown.push_back(row);
        }
        addKeys(shown, sweep);
        addOutcomes(shown, sweep);
        addMade(sweep);
        for (const MemberColumn& column : columns_) {
            ComparedFigure figure{column.name, column.unit, {}};
            for (const std::size_t row : shown) {
                figure.values.push_back(valueAt(row, column.name));
            }
            if (figure.differs()) sweep.figures.push_back(std::move(figure));
            if (sweep.figures.size() == kMostVarying) break;
        }
        return sweep;
    }

  private:
    double valueAt(std::size_t row, const std::string& column) const {
        return parseNumber(table_.cell(row, need(column))).value_or(std::numeric_limits<double>::quiet_NaN());
    }

    std::vector<std::string> textsOf(const std::string& key, const std::vector<std::size_t>& rows) const {
        std::vector<std::string> texts;
        for (const std::size_t row : rows) {
            texts.emplace_back(table_.cell(row, need(key)));
        }
        return texts;
    }

    void addKeys(const std::vector<std::size_t>& rows, ComparedSweep& sweep) const {
        const Json& keys = json_.at("keys");
        const auto units = json_.value("key_units", std::vector<std::string>(keys.size()));
        for (std::size_t i = 0; i < keys.size(); ++i) {
            const std::string name = keys[i].get<std::string>();
            sweep.keys.push_back(comparedKey(name, i < units.size() ? units[i] : "", textsOf(name, rows)));
        }
    }

    void addMade(ComparedSweep& sweep) const {
        const Json& made = json_.at("made_of");
        sweep.made.version = made.at("kesto");
        for (const Json& input : made.at("inputs")) {
            sweep.made.inputs.emplace_back(input.at("file"), input.at("sha256"));
        }
        for (const auto& [name, value] : made.at("options").items()) {
            for (const Json& text : value.is_array() ? value : Json::array({value})) {
                std::string given = text;
                if (!given.empty()) sweep.made.options.emplace_back("--" + name, std::move(given));
            }
        }
        sweep.designTable = json_.at("design_table");
        sweep.designSha256 = made.at("design").at("sha256");
    }

    // How many came to which end, and why the first of those that did not finish stopped.
    void addOutcomes(const std::vector<std::size_t>& rows, ComparedSweep& sweep) const {
        const std::string model = json_.at("model").get<std::string>();
        const std::string folder = model.substr(0, model.find_last_of("/\\") + 1);
        for (const auto& [member, row] : rows_) {
            const std::string outcome(table_.cell(row, need("outcome")));
            ++sweep.outcomes[outcome];
            if (outcome == toText(Outcome::finished) || sweep.failures.size() == kMostFailures) continue;
            const std::string message(table_.cell(row, need("message")));
            sweep.failures.push_back({member, outcome, withoutFolder(message, folder)});
        }
        for (const std::size_t row : rows) {
            sweep.ends.emplace_back(table_.cell(row, need("outcome")));
        }
    }

    std::size_t need(const std::string& column) const {
        if (const auto found = table_.column(column)) return *found;
        throw std::runtime_error(fmt::format("{} has no column \"{}\"", toString(table_.place()), column));
    }

    // "tank.size=500, roof.size=50"
    std::string keysOf(std::size_t row) const {
        std::string text;
        for (const Json& key : json_.at("keys")) {
            const std::string name = key.get<std::string>();
            const std::string_view value = table_.cell(row, need(name));
            if (!value.empty()) text += fmt::format("{}{}={}", text.empty() ? "" : ", ", name, value);
        }
        return text;
    }

    std::string folder_;
    CsvFile table_;
    Json json_;
    std::map<std::size_t, std::size_t> rows_;  // of the table, by member
    std::vector<MemberColumn> columns_;
};

template <class Read>
auto readingSweep(const std::string& folder, const Read& read) {
    return readingJson(joined(folder, kMembersFile), "kesto sweep", [&] { return read(Members(folder)); });
}

}  // namespace

std::vector<std::size_t> parseMembers(const std::string& text) {
    std::vector<std::size_t> members;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');) {
        const std::size_t dash = part.find('-');
        const std::size_t first = numberIn(part.substr(0, dash), text);
        const std::size_t last = dash == std::string::npos ? first : numberIn(part.substr(dash + 1), text);
        if (last < first || last - first >= kMostListed - members.size())
            throw std::runtime_error(
                fmt::format("--members {}: expected ascending ranges of at most {} members", text, kMostListed));
        for (std::size_t member = first; member <= last; ++member) {
            members.push_back(member);
        }
    }
    return members;
}

bool isSweep(const std::string& folder) {
    std::error_code error;
    return std::filesystem::exists(pathOf(joined(folder, kMembersFile)), error);
}

ComparedSweep readComparedSweep(const std::string& folder, std::size_t most) {
    return readingSweep(folder, [&](const Members& sweep) { return sweep.sweep(most); });
}

ComparedMembers readComparedMembers(const std::string& folder, const std::vector<std::size_t>& members,
                                    std::size_t most) {
    return readingSweep(folder, [&](const Members& sweep) {
        ComparedMembers compared{{}, sweep.size()};
        for (const std::size_t member : members.empty() ? sweep.first(most) : members) {
            compared.runs.push_back(sweep.run(member));
        }
        return compared;
    });
}

}  // namespace kesto
