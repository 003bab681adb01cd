#include "case_run.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "bits.h"
#include "child.h"
#include "host_record.h"

namespace {

// A case on a cycle may take a second; what takes longer hangs.
constexpr unsigned kSeconds = 20;

std::string statusName(std::int32_t status) {
    if (status == KESTO_SUCCESS) return "success";
    if (status == KESTO_SETUP_FAILURE) return "failure in set-up (-123456798)";
    if (status == KESTO_RUN_FAILURE) return "failure (-123456789)";
    return "status " + std::to_string(status);
}

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

class Player {
  public:
    Player(const std::string& path, const Case& one) : path_(path), case_(one), host_(one.model) {}

    // All differences, one a line.
    std::string play() {
        for (const Line& line : case_.script) {
            line_ = &line;
            try {
                step();
            } catch (const std::runtime_error& e) {
                differ(e.what());
                return differences_;
            }
        }
        return differences_;
    }

  private:
    AUEglobals& record() { return host_.record(); }
    const std::vector<std::string>& words() const { return line_->words; }

    std::string word(std::size_t i) const {
        if (i >= words().size()) throw std::runtime_error("the line is too short");
        std::string text = words()[i];
        if (text.size() > 1 && text.back() == ':') text.pop_back();
        return text;
    }

    void differ(const std::string& what) {
        differences_ += path_ + ":" + std::to_string(line_->number) + ": " + what + "\n";
    }
    void compare(const std::string& what, const std::string& expected, const std::string& got) {
        if (expected != got) differ(what + ": expected " + expected + ", got " + got);
    }
    void compare(const std::string& what, std::int32_t expected, std::int32_t got) {
        if (expected != got) differ(what + ": expected " + std::to_string(expected) + ", got " + std::to_string(got));
    }

    void step() {
        const std::string& verb = words().front();
        if (verb == "run") return run();
        if (verb == "free") return freeOutputs();
        if (verb == "set") return set();
        if (verb == "put") return put();
        if (verb == "null") return clear();
        if (verb == "sort")
            return withOutput([](auto* entries, std::int32_t count, auto) {
                std::sort(entries, entries + count, [](const auto& a, const auto& b) { return a.id < b.id; });
            });
        if (verb == "keep") return keep();
        expect();
    }

    void reportDamage() {
        if (!host_.damage().empty()) differ("memory: " + host_.damage());
    }

    // run 1 3
    // run 1 3 fails "text" [flag 0]
    // run 1 3 setup-fails "text" [flag 0]
    void run() {
        const std::int32_t first = readInteger(word(1));
        const std::int32_t last = readInteger(word(2));
        const std::string outcome = words().size() > 3 ? words()[3] : "succeeds";
        std::int32_t flag = record().ErrFlag;
        std::string message = record().ErrMsg;
        std::int32_t status = KESTO_SUCCESS;
        if (outcome == "fails" || outcome == "setup-fails") {
            status = outcome == "fails" ? KESTO_RUN_FAILURE : KESTO_SETUP_FAILURE;
            message = words().at(4);
            flag = words().size() > 6 ? readInteger(word(6)) : 1;
        } else if (outcome != "succeeds" && outcome != "aborts") {
            throw std::runtime_error("a run does not " + outcome);
        }
        const std::int32_t got = host_.run(first, last);
        compare("status", statusName(status), statusName(got));
        compare("ErrFlag", flag, record().ErrFlag);
        compare("ErrMsg", quoted(message), quoted(record().ErrMsg));
        if (got == KESTO_SUCCESS && first > INT32_MIN) compare("CurStep", std::max(first - 1, last), record().CurStep);
        reportDamage();
    }

    // set nConns -1      set ErrMsg "text"
    void set() {
        const std::string name = word(1);
        if (name == "ErrMsg") return static_cast<void>(std::strncpy(record().ErrMsg, words().at(2).c_str(), 255));
        if (name == "TimeStep") return static_cast<void>(record().TimeStep = readNumber(word(2), case_.names));
        if (name == "Latitude") return static_cast<void>(record().Latitude = readNumber(word(2), case_.names));
        *integerField(name) = readInteger(word(2));
    }

    std::int32_t* integerField(const std::string& name) {
        const std::pair<const char*, std::int32_t*> fields[] = {
            {"StartTime", &record().StartTime},
            {"nSteps", &record().nSteps},
            {"StopOnInfeas", &record().StopOnInfeas},
            {"BuildTree", &record().BuildTree},
            {"CurStep", &record().CurStep},
            {"nPotComps", &record().nPotComps},
            {"nTechSpecs", &record().nTechSpecs},
            {"nComps", &record().nComps},
            {"nConns", &record().nConns},
            {"nLogs", &record().nLogs},
            {"nWatBod", &record().nWatBod},
            {"nSplits", &record().nSplits},
            {"ErrFlag", &record().ErrFlag},
        };
        for (const auto& [field, place] : fields)
            if (name == field) return place;
        for (const HostTable& table : kTables)
            if (name == "n" + std::string(table.name)) return &(record().*table.count);
        throw std::runtime_error("no field " + name);
    }

    // put WatQuant 7: 1 2 3      put source 10: 5 5 5      The host writes a series anew.
    void put() {
        const bool source = word(1) == "source";
        const Table table = source ? Table::Rainfall : tableNamed(word(1)).value();
        float* const values = host_.find(table, source ? -readInteger(word(2)) : readInteger(word(2)));
        if (values == nullptr) throw std::runtime_error("no such series");
        const std::vector<float> given = readNumbers(words(), 3, case_.names);
        if (given.size() != static_cast<std::size_t>(case_.model.nSteps))
            throw std::runtime_error("one value a step is needed");
        std::copy(given.begin(), given.end(), values);
    }

    // null WatQuant 7      The host gives the series no values.
    void clear() {
        SeriesEntry* const entry = host_.findEntry(tableNamed(word(1)).value(), readInteger(word(2)));
        if (entry == nullptr) throw std::runtime_error("no such series");
        entry->Value = nullptr;
    }

    // Calls `visit` for the entries of the output table that the line names, their number, and where they hold a
    // series.
    template <class Visit>
    void withOutput(const Visit& visit) {
        AUEglobals& r = record();
        if (word(1) == "Logs") return visit(r.Logs, r.nLogs, &SignalSeriesEntry::Signal);
        if (word(1) == "WatBod") return visit(r.WatBod, r.nWatBod, &SignalSeriesEntry::Signal);
        for (const auto& [name, entries] : kPotentialTables)
            if (name == word(1)) return visit(r.*entries, r.nPotComps, &SeriesEntry::Value);
        throw std::runtime_error("no output table " + word(1));
    }

    // keep Logs 90      The host takes the series out of the table and, once the outputs are freed, still has it.
    void keep() {
        withOutput([&](auto* entries, std::int32_t count, auto series) {
            auto* const found = entry(word(1), entries, count);
            if (found == nullptr) return;
            auto* const values = std::exchange(found->*series, nullptr);
            const std::size_t bytes = static_cast<std::size_t>(record().nSteps) * sizeof *values;
            kept_.push_back({values, std::string(reinterpret_cast<const char*>(values), bytes)});
        });
    }

    void freeOutputs() {
        host_.free();
        reportDamage();
        for (const auto& [values, before] : kept_) {
            if (std::memcmp(values, before.data(), before.size()) != 0) differ("a series that was kept has changed");
            std::free(values);
        }
        kept_.clear();
    }

    void expect() {
        const std::string what = word(1);
        if (what == "ErrMsg") return compare(what, quoted(words().at(2)), quoted(record().ErrMsg));
        if (what == "Logs") return expectSignals(what, record().Logs, record().nLogs);
        if (what == "WatBod") return expectSignals(what, record().WatBod, record().nWatBod);
        for (const auto& [name, entries] : kPotentialTables)
            if (name == what) return expectPotential(what, record().*entries);
        if (const auto table = tableNamed(what)) {
            const float* const values = host_.find(*table, readInteger(word(2)));
            if (values == nullptr) return differ("no series " + what + " " + word(2));
            return expectValues(what + " " + word(2), values);
        }
        compare(what, readInteger(word(2)), *integerField(what));
    }

    // The entry that a line names: by id (the first that carries it) or by #position from 0.
    template <class Entry>
    Entry* entry(const std::string& table, Entry* entries, std::int32_t count) {
        const std::string name = word(2);
        if (entries == nullptr) {
            differ(table + ": null");
            return nullptr;
        }
        if (name.starts_with('#')) {
            const std::int32_t at = readInteger(name.substr(1));
            if (at < count) return entries + at;
        } else {
            const std::int32_t id = readInteger(name);
            for (std::int32_t i = 0; i < count; ++i)
                if (entries[i].id == id) return entries + i;
        }
        differ(table + ": no entry " + name);
        return nullptr;
    }

    // expect Logs null      expect Logs ids: 3 5      False when the line is of another form.
    template <class Entry>
    bool expectTable(const std::string& table, const Entry* entries, std::int32_t count) {
        const std::string form = word(2);
        if (form == "null") {
            if (entries != nullptr) differ(table + ": expected null");
            return true;
        }
        if (form != "ids") return false;
        std::string expected;
        std::string got;
        for (std::size_t i = 3; i < words().size(); ++i)
            expected += " " + words()[i];
        if (entries == nullptr && count != 0) {
            differ(table + ": null");
            return true;
        }
        for (std::int32_t i = 0; i < count; ++i)
            got += " " + std::to_string(entries[i].id);
        compare(table + " ids", expected, got);
        return true;
    }

    void expectPotential(const std::string& name, SeriesEntry* entries) {
        if (expectTable(name, entries, record().nPotComps)) return;
        const SeriesEntry* const found = entry(name, entries, record().nPotComps);
        if (found == nullptr) return;
        if (words().size() == 4 && words()[3] == "null") {
            if (found->Value != nullptr) differ(name + ": expected null values");
            return;
        }
        if (found->Value == nullptr) return differ(name + ": null values");
        expectValues(name + " " + word(2), found->Value);
    }

    void expectValues(const std::string& what, const float* values) {
        expectSteps(what, [&](std::size_t step, const std::string& text) {
            const float expected = readNumber(text, case_.names);
            if (!same(expected, values[step]))
                differ(what + " at step " + std::to_string(step) + ": expected " + written(expected) + ", got " +
                       written(values[step]));
        });
    }

    void expectSignals(const std::string& name, SignalSeriesEntry* entries, std::int32_t count) {
        if (expectTable(name, entries, count)) return;
        const SignalSeriesEntry* const found = entry(name, entries, count);
        if (found == nullptr) return;
        if (found->Signal == nullptr) return differ(name + ": null signals");
        expectSteps(name + " " + word(2), [&](std::size_t step, const std::string& text) {
            const auto [quantity, quality] = signal(text);
            const Signal got = found->Signal[step];
            if (!same(quantity, got.quantity) || !same(quality, got.quality))
                differ(name + " " + word(2) + " at step " + std::to_string(step) + ": expected " + written(quantity) +
                       "/" + written(quality) + ", got " + written(got.quantity) + "/" + written(got.quality));
        });
    }

    // quantity/quality, each a number or a formula
    std::pair<float, float> signal(const std::string& text) const {
        int depth = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '{') ++depth;
            if (text[i] == '}') --depth;
            if (text[i] == '/' && depth == 0)
                return {readNumber(text.substr(0, i), case_.names), readNumber(text.substr(i + 1), case_.names)};
        }
        throw std::runtime_error("expected QUANTITY/QUALITY instead of " + text);
    }

    // Either one value for each step of the series, or: step 5: VALUE
    void expectSteps(const std::string& what, const std::function<void(std::size_t, const std::string&)>& check) {
        const auto steps = static_cast<std::size_t>(record().nSteps);
        if (words().size() > 3 && words()[3] == "step") {
            const auto step = static_cast<std::size_t>(readInteger(word(4)));
            if (step >= steps) throw std::runtime_error("no such step");
            return check(step, words().at(5));
        }
        std::size_t step = 0;
        for (std::size_t i = 3; i < words().size(); ++i) {
            const auto [text, times] = repeated(words()[i]);
            for (int n = 0; n < times; ++n, ++step) {
                if (step >= steps) throw std::runtime_error(what + ": more values than steps");
                check(step, text);
            }
        }
        if (step != steps) throw std::runtime_error(what + ": fewer values than steps");
    }

    const std::string& path_;
    const Case& case_;
    HostRecord host_;
    const Line* line_ = nullptr;
    std::string differences_;
    std::vector<std::pair<void*, std::string>> kept_;  // series of the library's, with the bytes that they had
};

// run 1 3 aborts "expression" module.cpp 601      Without a number, any line of the module will do.
std::string checkAbort(const std::string& where, const Line& line, const ChildResult& child) {
    if (!child.aborted()) return where + ": expected an abort, got " + child.answer + child.describe() + "\n";
    const std::string before = "Assertion failed: " + line.words.at(4) + ", file " + line.words.at(5) + ", line ";
    const bool exact = line.words.size() > 6;
    const std::string number = exact ? line.words.at(6) : "";
    const std::string& report = child.stderr_;
    bool good = report.starts_with(before) && report.ends_with('\n');
    if (good) {
        const std::string rest = report.substr(before.size(), report.size() - before.size() - 1);
        good = exact ? rest == number : !rest.empty() && rest.find_first_not_of("0123456789") == std::string::npos;
    }
    if (good && child.stdout_.empty()) return "";
    return where + ": expected on stderr: " + before + (exact ? number : "N") + "\n  got: " + child.describe() + "\n";
}

}  // namespace

std::string runCase(const std::string& path, const Case& one) {
    const ChildResult child = runInChild([&] { return Player(path, one).play(); }, kSeconds);
    const Line& final = one.script.back();
    const std::string where = path + ":" + std::to_string(final.number);
    if (final.words.size() > 3 && final.words[0] == "run" && final.words[3] == "aborts")
        return checkAbort(where, final, child);
    if (!child.exited()) return path + ":" + std::to_string(one.line) + ": " + child.describe() + "\n";
    if (!child.stdout_.empty() || !child.stderr_.empty())
        return child.answer + where + ": the engine printed: " + child.describe() + "\n";
    return child.answer;
}
