#include "case_file.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "components/type_codes.h"
#include "expression.h"
#include "simulation/dispatch.h"

namespace {

// Types by their tags, for the case files; the appliances share one and go by their codes.
std::map<std::string, float> readTypeCodes() {
    std::map<std::string, float> codes = {{"junction", static_cast<float>(code::kJunction)},
                                          {"mixer", static_cast<float>(code::kMixer)}};
    for (const ComponentType& type : componentTypes())
        codes[type.tag] = static_cast<float>(type.code);
    codes.erase(findType(code::kOutdoorUse)->tag);
    return codes;
}

const std::map<std::string, float>& typeCodes() {
    static const std::map<std::string, float> codes = readTypeCodes();
    return codes;
}

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what);
}

// Where a comment begins: a # with blanks, or the line's ends, on both sides, outside quotes.
std::string withoutComment(const std::string& text) {
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') quoted = !quoted;
        const bool alone = (i == 0 || text[i - 1] == ' ') && (i + 1 == text.size() || text[i + 1] == ' ');
        if (text[i] == '#' && !quoted && alone) return text.substr(0, i);
    }
    return text;
}

// Blanks part words, but not within "quotes" and {formulas}. The quotes are dropped, a { stays as a formula's mark.
std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> words;
    std::string word;
    bool quoted = false;
    bool formula = false;
    bool any = false;
    for (const char c : text) {
        if (c == '"') {
            quoted = !quoted;
            any = true;
        } else if (c == ' ' && !quoted && !formula) {
            if (any) words.push_back(word);
            word.clear();
            any = false;
        } else {
            if (c == '{' && !quoted) formula = true;
            if (c == '}' && !quoted) formula = false;
            word += c;
            any = true;
        }
    }
    if (quoted || formula) fail("a quote or brace is not closed");
    if (any) words.push_back(word);
    return words;
}

std::string trimmed(const std::string& text) {
    const std::size_t from = text.find_first_not_of(' ');
    if (from == std::string::npos) return "";
    return text.substr(from, text.find_last_not_of(' ') - from + 1);
}

// "7:" and "7" are both 7: the colon that stands before values is there for the eye.
std::string withoutColon(std::string word) {
    if (!word.empty() && word.back() == ':') word.pop_back();
    return word;
}

// Builds one case or one network, line by line.
class Builder {
  public:
    Builder(Case& target, const std::map<std::string, Case>& networks) : case_(target), networks_(networks) {}

    void read(const Line& line) {
        words_ = &line.words;
        const std::string& verb = word(0);
        if (verb == "uses") return use();
        if (verb == "steps") return static_cast<void>(model().nSteps = integer(1));
        if (verb == "let") return static_cast<void>(case_.names[word(1)] = number(last()));
        if (verb == "component") return component();
        if (verb == "change") return change();
        if (verb == "connect") return connect(false);
        if (verb == "connect-first") return connect(true);
        if (verb == "brand") return brand();
        if (verb == "specification") return specification();
        if (verb == "series") return series();
        if (verb == "frequency") return frequency();
        if (verb == "put") return put();
        if (verb == "split") return splitter();
        if (verb == "pots") return pots();
        if (verb == "field") return field();
        if (verb == "without") return without();
        if (verb == "source") return source();
        if (verb == "log") return log();
        if (verb == "not-on") return notOn();
        fail("unknown word " + verb);
    }

  private:
    Model& model() { return case_.model; }

    const std::string& word(std::size_t i) const {
        if (i >= words_->size()) fail("the line is too short");
        return (*words_)[i];
    }
    const std::string& last() const { return words_->back(); }
    float number(const std::string& text) const { return readNumber(text, case_.names); }
    std::int32_t integer(std::size_t i) const { return readInteger(withoutColon(word(i))); }

    // Values from word i on.
    std::vector<float> values(std::size_t i) const { return readNumbers(*words_, i, case_.names); }

    void use() {
        const auto found = networks_.find(word(1));
        if (found == networks_.end()) fail("no network " + word(1));
        case_.model = found->second.model;
        case_.names = found->second.names;
    }

    void notOn() {
        if (word(1) != "windows") fail("not-on knows only windows");
#ifdef _WIN32
        case_.skipped = true;
#endif
    }

    static std::pair<std::string, std::string> setting(const std::string& text) {
        const std::size_t at = text.find('=');
        if (at == std::string::npos) fail("expected NAME=VALUE instead of " + text);
        return {text.substr(0, at), text.substr(at + 1)};
    }

    void setColumn(ComponentRow& row, const std::string& text) const {
        const auto [name, value] = setting(text);
        if (name == "id") return static_cast<void>(row.id = number(value));
        if (name == "type") return static_cast<void>(row.techid = typeCode(value));
        if (name == "key") return static_cast<void>(row.key = number(value));
        if (name == "brand") return static_cast<void>(row.brand = number(value));
        if (name == "size") return static_cast<void>(row.size = number(value));
        fail("no column " + name);
    }

    float typeCode(const std::string& text) const {
        const auto found = typeCodes().find(text);
        return found == typeCodes().end() ? number(text) : found->second;
    }

    void component() {
        ComponentRow row{number(word(1)), typeCode(word(2)), 0.F, 0.F, 0.F};
        for (std::size_t i = 3; i < words_->size(); ++i)
            setColumn(row, word(i));
        model().components.push_back(row);
    }

    ComponentRow& row(float id) {
        for (ComponentRow& candidate : model().components)
            if (candidate.id == id) return candidate;
        fail("no such component to change");
    }

    // change 7 size=3      change brand 5: 12=0.5
    void change() {
        if (word(1) == "brand") {
            for (std::size_t i = 3; i < words_->size(); ++i) {
                const auto [name, value] = setting(word(i));
                specificationRow(number(withoutColon(word(2))), number(name)).value = number(value);
            }
            return;
        }
        ComponentRow& target = row(number(word(1)));
        for (std::size_t i = 2; i < words_->size(); ++i)
            setColumn(target, word(i));
    }

    SpecificationRow& specificationRow(float brand, float number) {
        for (SpecificationRow& candidate : model().specifications)
            if (candidate.brand == brand && candidate.number == number) return candidate;
        fail("no such specification to change");
    }

    static std::pair<std::int32_t, std::int32_t> port(const std::string& text) {
        const std::size_t at = text.find(':');
        if (at == std::string::npos) fail("expected ID:PORT instead of " + text);
        return {readInteger(text.substr(0, at)), readInteger(text.substr(at + 1))};
    }

    void connect(bool first) {
        const auto [sender, senderPort] = port(word(1));
        if (word(2) != ">") fail("expected > between sender and receiver");
        const auto [receiver, receiverPort] = port(word(3));
        const auto link = static_cast<std::int32_t>(model().connections.size()) + 1;
        const auto at = first ? model().connections.begin() : model().connections.end();
        model().connections.insert(at, {link, sender, senderPort, receiver, receiverPort});
    }

    // Columns that the engine does not read hold values that would be noticed.
    static SpecificationRow specificationOf(float brand, float number, float value) {
        return {-7.F, -7.F, brand, -7.F, 1.F, 1.F, number, value, -7.F};
    }

    void brand() {
        const float id = number(withoutColon(word(1)));
        for (std::size_t i = 2; i < words_->size(); ++i) {
            const auto [name, value] = setting(word(i));
            model().specifications.push_back(specificationOf(id, number(name), number(value)));
        }
    }

    void specification() {
        SpecificationRow row = specificationOf(0.F, 0.F, 0.F);
        for (std::size_t i = 1; i < words_->size(); ++i) {
            const auto [name, value] = setting(word(i));
            float* const column = name == "brand"     ? &row.brand
                                  : name == "number"  ? &row.number
                                  : name == "value"   ? &row.value
                                  : name == "select1" ? &row.select1
                                  : name == "select2" ? &row.select2
                                                      : nullptr;
            if (column == nullptr) fail("no column " + name);
            *column = number(value);
        }
        model().specifications.push_back(row);
    }

    void series() {
        const auto table = tableNamed(word(1));
        if (!table) fail("no series table " + word(1));
        NamedSeries entry{integer(2), values(3)};
        const int width = *table == Table::FreqSer ? kAppliances : 1;
        const auto expected = static_cast<std::size_t>(std::max(0, model().nSteps) * width);
        if (entry.values.size() != expected)
            fail(std::to_string(entry.values.size()) + " values instead of " + std::to_string(expected));
        model().table(*table).push_back(entry);
    }

    // put WatQuant 7: 1 2 3      put source 10: 5 5 5      Other values for a series that is there.
    void put() {
        const bool source = word(1) == "source";
        const std::int32_t id = source ? -integer(2) : integer(2);
        for (NamedSeries& entry : model().table(source ? Table::Rainfall : tableNamed(word(1)).value())) {
            if (entry.id != id) continue;
            const std::vector<float> given = values(3);
            if (given.size() != entry.values.size()) fail(std::to_string(entry.values.size()) + " values are needed");
            entry.values = given;
            return;
        }
        fail("no such series");
    }

    // frequency 5 kind 3: 1 2 1
    void frequency() {
        const std::int32_t group = integer(1);
        const std::int32_t kind = integer(3);
        const std::vector<float> given = values(4);
        if (given.size() != static_cast<std::size_t>(model().nSteps)) fail("one value a step is needed");
        auto& table = model().table(Table::FreqSer);
        auto found = std::find_if(table.begin(), table.end(), [&](const NamedSeries& s) { return s.id == group; });
        if (found == table.end()) {
            table.push_back({group, std::vector<float>(given.size() * kAppliances)});
            found = table.end() - 1;
        }
        for (std::size_t step = 0; step < given.size(); ++step)
            found->values[step * kAppliances + static_cast<std::size_t>(kind) - 1] = given[step];
    }

    // split 9: 11 12 beta 0.5
    void splitter() {
        Split entry{integer(1), {}, 0.F};
        std::size_t i = 2;
        for (; word(i) != "beta"; ++i)
            entry.members.push_back(integer(i));
        entry.beta = number(word(i + 1));
        model().splits.push_back(entry);
    }

    void pots() {
        for (std::size_t i = 1; i < words_->size(); ++i)
            model().pots.push_back(integer(i));
    }

    void field() {
        const std::string& name = word(1);
        if (name == "TimeStep") return static_cast<void>(model().TimeStep = number(word(2)));
        if (name == "Latitude") return static_cast<void>(model().Latitude = number(word(2)));
        if (name == "StartTime") return static_cast<void>(model().StartTime = integer(2));
        if (name == "StopOnInfeas") return static_cast<void>(model().StopOnInfeas = integer(2));
        if (name == "BuildTree") return static_cast<void>(model().BuildTree = integer(2));
        fail("no field " + name);
    }

    template <class Rows, class Match>
    static void drop(Rows& rows, Match match) {
        if (std::erase_if(rows, match) == 0) fail("nothing to leave out");
    }

    void without() {
        const std::string& what = word(1);
        if (what == "component") {
            const float id = number(word(2));
            drop(model().components, [&](const ComponentRow& r) { return r.id == id; });
            std::erase_if(model().connections, [&](const ConnectionRow& r) {
                return static_cast<float>(r.senderId) == id || static_cast<float>(r.receiverId) == id;
            });
        } else if (what == "connection") {
            const auto from = port(word(2));
            const auto to = port(word(4));
            drop(model().connections, [&](const ConnectionRow& r) {
                return r.senderId == from.first && r.senderPort == from.second && r.receiverId == to.first &&
                       r.receiverPort == to.second;
            });
        } else if (what == "series") {
            const std::int32_t id = integer(3);
            drop(model().table(tableNamed(word(2)).value()), [&](const NamedSeries& s) { return s.id == id; });
        } else if (what == "specification") {
            const auto [brand, number] = port(word(2));
            drop(model().specifications, [&, b = static_cast<float>(brand), n = static_cast<float>(number)](
                                             const SpecificationRow& r) { return r.brand == b && r.number == n; });
        } else if (what == "pots") {
            model().pots.clear();
        } else {
            fail("cannot leave out " + what);
        }
    }

    // source 90 quality 7: 5 10     A roof of area 1 that loses nothing: quantities from its rainfall series. Key and
    // brand are the negated id, so that it books nothing.
    void source() {
        const std::int32_t id = integer(1);
        const auto key = static_cast<float>(-id);
        model().components.push_back({static_cast<float>(id), 28.F, key, key, 1.F});
        model().specifications.push_back(specificationOf(key, 25.F, number(withoutColon(word(3)))));
        model().specifications.push_back(specificationOf(key, 27.F, 0.F));
        NamedSeries rain{-id, values(4)};
        if (rain.values.size() != static_cast<std::size_t>(model().nSteps)) fail("one value a step is needed");
        model().table(Table::Rainfall).push_back(rain);
    }

    // log 7:1 as 91
    void log() {
        const auto [sender, senderPort] = port(word(1));
        const std::int32_t id = integer(3);
        model().components.push_back({static_cast<float>(id), 26.F, 0.F, 0.F, 0.F});
        const auto link = static_cast<std::int32_t>(model().connections.size()) + 1;
        model().connections.push_back({link, sender, senderPort, id, 1});
    }

    Case& case_;
    const std::map<std::string, Case>& networks_;
    const std::vector<std::string>* words_ = nullptr;
};

bool isOperation(const std::string& word) {
    constexpr std::string_view kOperations[] = {"run", "free", "set", "put", "null", "sort", "keep", "expect"};
    return std::find(std::begin(kOperations), std::end(kOperations), word) != std::end(kOperations);
}

// Whether the case says what must come out. That a run succeeds is not enough.
bool expectsSomething(const Case& one) {
    return std::any_of(one.script.begin(), one.script.end(), [](const Line& line) {
        return line.words[0] == "expect" ||
               (line.words[0] == "run" && line.words.size() > 3 && line.words[3] != "succeeds");
    });
}

// Lines of the file, with \ at the end joining two.
std::vector<Line> readLines(std::istream& file, const std::string& path) {
    std::vector<Line> lines;
    std::string text;
    std::string joined;
    int number = 0;
    int from = 1;
    while (std::getline(file, text)) {
        ++number;
        if (joined.empty()) from = number;
        joined += withoutComment(text);
        if (!joined.empty() && joined.back() == '\\') {
            joined.back() = ' ';
            continue;
        }
        const std::string whole = trimmed(joined);
        joined.clear();
        if (whole.empty()) continue;
        const std::size_t blank = whole.find(' ');
        Line line{from, {}, blank == std::string::npos ? "" : trimmed(whole.substr(blank))};
        if (whole.starts_with("case ")) {
            line.words = {"case"};
        } else {
            try {
                line.words = split(whole);
            } catch (const std::runtime_error& e) {
                fail(path + ":" + std::to_string(from) + ": " + e.what());
            }
        }
        lines.push_back(line);
    }
    return lines;
}

class Assembler {
  public:
    explicit Assembler(CaseFile& file) : file_(file) {}

    void read(const Line& line) {
        const std::string& verb = line.words.front();
        if (verb == "case" || verb == "network") {
            if (line.rest.empty()) fail("a name is needed");
            inNetwork_ = verb == "network";
            Case fresh;
            fresh.name = line.rest;
            fresh.line = line.number;
            if (inNetwork_) {
                current_ = &(networks_[line.rest] = fresh);
            } else {
                file_.cases.push_back(fresh);
                current_ = &file_.cases.back();
            }
            return;
        }
        if (current_ == nullptr) fail("expected case or network");
        // Before the first operation, a host that puts values into a series is still writing its model.
        if (isOperation(verb) && !(verb == "put" && current_->script.empty())) {
            if (inNetwork_) fail("a network has no operations");
            current_->script.push_back(line);
        } else if (!current_->script.empty()) {
            fail("the model is complete once the first operation stands");
        } else {
            Builder(*current_, networks_).read(line);
        }
    }

  private:
    CaseFile& file_;
    std::map<std::string, Case> networks_;
    Case* current_ = nullptr;
    bool inNetwork_ = false;
};

}  // namespace

CaseFile readCaseFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) fail(path + ": cannot be read");
    return readCases(file, path);
}

CaseFile readCases(std::istream& text, const std::string& path) {
    CaseFile file{path, {}};
    Assembler assembler(file);
    for (const Line& line : readLines(text, path)) {
        try {
            assembler.read(line);
        } catch (const std::runtime_error& e) {
            fail(path + ":" + std::to_string(line.number) + ": " + e.what());
        }
    }
    for (const Case& one : file.cases)
        if (!expectsSomething(one))
            fail(path + ":" + std::to_string(one.line) +
                 ": the case expects nothing: end it with an expect line, or with a run that fails or aborts");
    return file;
}

float readNumber(const std::string& word, const std::map<std::string, float>& names) {
    if (word.starts_with('{') && word.ends_with('}')) return evaluate(word.substr(1, word.size() - 2), names);
    char* end = nullptr;
    const float value = std::strtof(word.c_str(), &end);
    if (word.empty() || *end != '\0') fail("expected a number instead of " + word);
    return value;
}

std::pair<std::string, int> repeated(const std::string& word) {
    const std::size_t star = word.rfind('*');
    const std::size_t brace = word.rfind('}');
    if (star == std::string::npos || (brace != std::string::npos && star < brace)) return {word, 1};
    return {word.substr(0, star), readInteger(word.substr(star + 1))};
}

std::vector<float> readNumbers(const std::vector<std::string>& words, std::size_t from,
                               const std::map<std::string, float>& names) {
    std::vector<float> values;
    for (std::size_t i = from; i < words.size(); ++i) {
        const auto [word, times] = repeated(words[i]);
        values.insert(values.end(), static_cast<std::size_t>(times), readNumber(word, names));
    }
    return values;
}

std::int32_t readInteger(const std::string& word) {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size()) fail("expected an integer instead of " + word);
    return value;
}

std::optional<Table> tableNamed(const std::string& name) {
    for (std::size_t i = 0; i < kTables.size(); ++i)
        if (kTables[i].name == name) return static_cast<Table>(i);
    return std::nullopt;
}
