#include "design.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>
#include <unordered_map>

#include "sha256.h"
#include "varied.h"

namespace kesto {

namespace {

constexpr std::size_t kMostMembers = 100'000'000;

// A number as the cells of the model's tables: with the decimal mark of the file, and thousands that are parted. One
// that can be read in two ways, with a unit or without, is none.
void takeCell(Value& value, const std::string& text, DecimalMark mark) {
    const bool isPlain = formOf(text) != NumberForm::noNumber;
    const std::string_view number = std::string_view(text).substr(0, isPlain ? text.size() : text.rfind(' '));
    const NumberForm form = formOf(number);
    if (form == NumberForm::noNumber) return;  // as after --set, as is what every file means the same by
    if (parseNumber(number) && (mark == DecimalMark::point || form == NumberForm::whole)) return;
    value = Value{};
    value.kind = Value::Kind::text;
    value.text = text;
    value.fromCell = true;
    value.decimalMark = mark;
    if (const auto read = readNumber(text, mark)) {
        value.kind = Value::Kind::real;
        value.number = *read;
    }
}

Place placeOfArgument(const std::string& argument) {
    return {std::make_shared<const std::string>(argument), 0, 0};
}

}  // namespace

std::optional<Design> Design::read(const DesignOptions& options, const ModelDocument& document,
                                   Diagnostics& diagnostics) {
    Design design;
    const std::size_t before = diagnostics.count(Severity::error);
    if (options.scenarios) design.addScenarios(document, diagnostics);
    if (!options.table.empty()) design.addTable(options.table, diagnostics);
    for (const std::string& text : options.vary) {
        design.addVaried(text, diagnostics);
    }
    if (design.factors_.empty() && diagnostics.count(Severity::error) == before) {
        diagnostics.error("missing-key", placeOfArgument("kesto sweep"),
                          "expected a table of members, --vary or --scenarios");
    }
    GivenPaths given;
    for (const KeyPath& path : design.paths_) {
        if (!path.empty() && given.add(path)) design.mayLose_ = true;
    }
    design.count(diagnostics);
    if (diagnostics.count(Severity::error) > before) return std::nullopt;
    return design;
}

// Each key once, whether a column or varied. What is no key is reported.
std::size_t Design::addKey(const std::string& key, const Place& place, Diagnostics& diagnostics) {
    const auto path = parseKeyPath(key);
    if (!path || !leadsToValue(*path)) {
        diagnostics.error("wrong-value", place,
                          fmt::format("\"{}\" leads to no value; expected a key such as tank.size or "
                                      "series.rainfall.scale",
                                      key));
    } else if (std::find(paths_.begin(), paths_.end(), *path) != paths_.end()) {
        diagnostics.error("repeated", place, fmt::format("{} is given twice; expected each key once", key));
    }
    keys_.push_back(key);
    paths_.push_back(path.value_or(KeyPath{}));
    places_.push_back(place);
    return keys_.size() - 1;
}

void Design::addScenarios(const ModelDocument& document, Diagnostics& diagnostics) {
    Factor factor;
    factor.isScenarios = true;
    factor.levels.emplace_back();  // the model itself
    const Value* scenarios = document.file.field("scenarios");
    for (const Field& field : scenarios ? scenarios->fields : std::vector<Field>()) {
        factor.levels.push_back(field.name.value);
    }
    if (factor.levels.size() == 1) {
        diagnostics.error("missing-key", document.file.place, "the model has no scenarios; expected [scenarios.NAME]");
    }
    factor.keys.push_back(keys_.size());
    keys_.emplace_back("scenario");
    paths_.emplace_back();
    places_.push_back(placeOfArgument("--scenarios"));
    factors_.push_back(std::move(factor));
}

void Design::addTable(const std::string& path, Diagnostics& diagnostics) {
    tablePath_ = path;
    auto csv = CsvFile::read(path, placeOfArgument(path), diagnostics);
    if (!csv) return;
    csv->noteUnderstood({}, diagnostics);
    noteThousands(*csv, diagnostics);
    Factor factor;
    for (const std::string& column : csv->columns()) {
        factor.keys.push_back(addKey(column, csv->headerPlace(), diagnostics));
    }
    if (csv->rows() == 0) {
        diagnostics.error("bad-table", csv->place(), "the table has no rows; expected one for each member");
    }
    factor.table = std::move(csv);
    factors_.push_back(std::move(factor));
}

void Design::addVaried(const std::string& text, Diagnostics& diagnostics) {
    const std::size_t equals = endOfKeyPath(text);
    const Place place = placeOfArgument("--vary " + text);
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
        diagnostics.error("wrong-value", place, "expected KEY=VALUE,VALUE,... or KEY=FROM:TO:COUNT");
        return;
    }
    Factor factor;
    factor.keys.push_back(addKey(text.substr(0, equals), place, diagnostics));
    try {
        factor.levels = variedValues(std::string_view(text).substr(equals + 1));
    } catch (const std::runtime_error& error) {
        diagnostics.error("wrong-value", place, error.what());
    }
    factors_.push_back(std::move(factor));
}

void Design::count(Diagnostics& diagnostics) {
    members_ = 1;
    for (const Factor& factor : factors_) {
        if (factor.size() > 0 && members_ > kMostMembers / factor.size()) {
            diagnostics.error("too-large", placeOfArgument("kesto sweep"),
                              fmt::format("the design has more than {} members", kMostMembers));
            return;
        }
        members_ *= factor.size();
    }
}

std::size_t Design::levelOf(std::size_t factor, std::size_t member) const {
    std::size_t rest = member - 1;
    for (std::size_t i = factors_.size() - 1; i > factor; --i) {
        rest /= factors_[i].size();
    }
    return rest % factors_[factor].size();
}

std::vector<std::string> Design::cellsOf(std::size_t member) const {
    std::vector<std::string> cells;
    for (std::size_t i = 0; i < factors_.size(); ++i) {
        for (std::size_t key = 0; key < factors_[i].keys.size(); ++key) {
            cells.emplace_back(factors_[i].cell(levelOf(i, member), key));
        }
    }
    return cells;
}

std::string Design::scenarioOf(std::size_t member) const {
    const bool hasScenarios = !factors_.empty() && factors_.front().isScenarios;
    return hasScenarios ? factors_.front().levels[levelOf(0, member)] : std::string();
}

std::vector<std::string> Design::scenarios() const {
    const bool hasScenarios = !factors_.empty() && factors_.front().isScenarios;
    return hasScenarios ? factors_.front().levels : std::vector<std::string>{""};
}

// For each level the first one that has the same cells at all paths but `hidden`.
std::vector<std::size_t> Design::firstLevels(const Factor& factor, const std::set<KeyPath>& hidden) const {
    std::map<std::vector<std::string_view>, std::size_t> known;
    std::vector<std::size_t> firsts;
    for (std::size_t level = 0; level < factor.size(); ++level) {
        std::vector<std::string_view> cells;
        for (std::size_t key = 0; key < factor.keys.size(); ++key) {
            if (!hidden.contains(paths_[factor.keys[key]])) cells.push_back(factor.cell(level, key));
        }
        firsts.push_back(known.emplace(std::move(cells), level).first->second);
    }
    return firsts;
}

std::vector<std::size_t> Design::firstAlike(const std::set<KeyPath>& hidden, std::size_t first,
                                            std::size_t last) const {
    std::vector<std::vector<std::size_t>> levels;
    for (const Factor& factor : factors_) {
        levels.push_back(firstLevels(factor, hidden));
    }
    std::unordered_map<std::size_t, std::size_t> known;  // by the first of all members that is alike
    std::vector<std::size_t> firsts;
    for (std::size_t member = first; member <= last; ++member) {
        std::size_t alike = 0;
        for (std::size_t i = 0; i < factors_.size(); ++i) {
            alike = alike * factors_[i].size() + levels[i][levelOf(i, member)];
        }
        firsts.push_back(known.emplace(alike, member).first->second);
    }
    return firsts;
}

Override Design::overrideAt(const Factor& factor, std::size_t level, std::size_t key) const {
    const std::size_t index = factor.keys[key];
    const std::string text(factor.cell(level, key));
    Override one = overrideOf(paths_[index], text, fmt::format("--vary {}={}", keys_[index], text));
    one.keyPlace = places_[index];
    if (!factor.table) return one;
    takeCell(one.value, text, factor.table->decimalMark());
    setPlace(one.value, factor.table->placeOf(level, key));
    return one;
}

std::vector<Override> Design::overridesOf(std::size_t member, Diagnostics& diagnostics) const {
    std::vector<Override> overrides;
    for (std::size_t i = 0; i < factors_.size(); ++i) {
        const Factor& factor = factors_[i];
        const std::size_t level = levelOf(i, member);
        for (std::size_t key = 0; key < factor.keys.size() && !factor.isScenarios; ++key) {
            if (factor.cell(level, key).empty()) continue;
            overrides.push_back(overrideAt(factor, level, key));
            refuseUnfit(overrides.back(), std::string(factor.cell(level, key)), diagnostics);
        }
    }
    if (mayLose_) refuseLost(overrides, diagnostics);
    return overrides;
}

// Two keys of one member of which the second one leaves nothing of the first. In a table, each row may have another.
void Design::refuseLost(const std::vector<Override>& overrides, Diagnostics& diagnostics) const {
    GivenPaths given;
    for (const Override& one : overrides) {
        if (const auto lost = given.add(one.path)) {
            diagnostics.error("repeated", one.value.place,
                              fmt::format("{} replaces {}, which is given before it; expected one of them",
                                          toText(one.path), toText(*lost)));
        }
    }
}

bool Design::changesShape() const {
    const bool hasScenarios = !factors_.empty() && factors_.front().isScenarios;
    return hasScenarios || std::any_of(paths_.begin(), paths_.end(), [](const KeyPath& path) {
               return path.front() == "simulation" || path.back() == "type" || path.back() == "kind";
           });
}

std::string Design::sha256() const {
    Sha256 sum;
    for (const std::string& key : keys_) {
        sum.add(key + '\n');
    }
    for (const Factor& factor : factors_) {
        sum.add(fmt::format("{} {}\n", factor.keys.size(), factor.size()));
        for (std::size_t level = 0; level < factor.size(); ++level) {
            for (std::size_t key = 0; key < factor.keys.size(); ++key) {
                sum.add(factor.cell(level, key));
                sum.add("\n");
            }
        }
    }
    return sum.text();
}

}  // namespace kesto
